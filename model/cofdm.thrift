namespace cpp korvel.thrift.cofdm
namespace py korvel.cofdm

/** Parameters of the COFDM (DVB-T) output modulators, each an index of the DVB-T tables. */
struct COFDMModConfig {
  1: i32 bandwidth
  2: i32 constellation
  3: i32 guardInterval
  4: i32 codeRate
  5: i32 transmissionMode
}
