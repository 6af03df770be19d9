namespace cpp korvel.thrift.qam
namespace py korvel.qam

/** Parameters of the QAM (DVB-C) output modulators. */
struct QAMModConfig {
  1: i32 constellation
  /** Symbols a second. */
  2: i32 symbolRate
  3: bool spectrumInverted
}
