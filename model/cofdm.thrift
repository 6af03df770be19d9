namespace cpp korvel.thrift.cofdm
namespace py korvel.cofdm

/** Parameters of the COFDM (DVB-T) output modulators: bandwidth in MHz, the others as the fields of
    DVB's terrestrial delivery system descriptor. */
struct COFDMModConfig {
  1: i32 bandwidth
  2: i32 constellation
  3: i32 guardInterval
  4: i32 codeRate
  5: i32 transmissionMode
}
