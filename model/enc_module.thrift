namespace cpp korvel.thrift.enc_module
namespace py korvel.enc_module

/** How an encoder module encodes one HDMI input. */
struct BasicENCSettings {
  1: i32 videoCodec
  2: i32 videoResolution
  3: i32 videoProfile
  4: i32 audioCodec
  /** Kilobits a second. */
  5: i32 videoBitrate = 8000
  6: i32 audioBitrate = 192
  7: string serviceName
  8: string providerName
}
