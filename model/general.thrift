// Identifiers and small records that every part of the headend shares.

namespace cpp korvel.thrift.general
namespace py korvel.general

/** The RF inputs of a headend. TDTALL and SATALL name groups; no input carries them. */
enum RFInputId {
  TDT1 = 1
  TDT2 = 2
  SAT1 = 3
  SAT2 = 4
  SAT3 = 5
  SAT4 = 6
  SAT5 = 7
  SAT6 = 8
  SAT7 = 9
  SAT8 = 10
  TDTALL = 240
  SATALL = 243
}

enum CountryCode {
  OTHER = 0
  SPAIN = 1
  FRANCE = 2
  UK = 3
  AUSTRALIA = 4
  ITALY = 5
  PORTUGAL = 6
  GREECE = 7
  NEWZEALAND = 8
  SWEDEN = 9
  FINLAND = 10
  MALDIVES = 11
  MEXICO = 12
  SOUTHKOREA = 13
  TAIWAN = 14
}

enum AlarmCode {
  NO_SIGNAL = 1
  OVER_TEMPERATURE = 2
  FAN_FAILURE = 3
  LNB_SHORT_CIRCUIT = 4
  MODULE_MISSING = 5
  CAM_FAILURE = 6
  OUTPUT_OVERFLOW = 7
}

/** Where an IP service is sent: a multicast group and a UDP port. */
struct OutputAddress {
  1: string address
  2: i32 port
}

/** Power and switching of the LNB behind a satellite input. */
struct LNBConfiguration {
  /** Supply in volts: 0, 13 or 18. */
  1: i32 voltage
  /** The 22 kHz continuous tone. */
  2: bool tone
  /** DiSEqC committed switch position, 0 when there is no switch. */
  3: i32 diseqcPosition
  /** Local oscillators of the two bands in MHz. */
  4: i32 lowBandOscillator
  5: i32 highBandOscillator
}
