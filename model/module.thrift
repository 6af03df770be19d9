// The plug-in modules of a headend and how they are addressed.

namespace cpp korvel.thrift.module
namespace py korvel.module

/** A position in the headend's chassis. */
enum ModuleSlot {
  HUB = 0
  SLOT1 = 1
  SLOT2 = 2
  SLOT3 = 3
  SLOT4 = 4
  SLOT5 = 5
  SLOT6 = 6
  SLOT7 = 7
  SLOT8 = 8
  SLOT9 = 9
  SLOT10 = 10
  SLOT11 = 11
  SLOT12 = 12
}

/** One connector of a module: its slot and the port on it. */
struct ModuleChainAddress {
  1: i32 slot = 0
  2: i32 port
}

struct ModuleStatus {
  1: string model
  2: string serialNumber
  3: string firmwareVersion
  /** Degrees Celsius. */
  4: i32 temperature
  5: bool present
}
