namespace cpp korvel.thrift.rfchannels
namespace py korvel.rfchannels

/** The RF output channel that carries an entry; the controller assigns it. */
struct RFChannelInfo {
  1: i32 channelIndex
  2: string channelName
  /** kHz. */
  3: i32 frequency
  4: i32 bandwidth
}
