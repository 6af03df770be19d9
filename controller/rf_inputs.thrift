// What is read of a status where only the RF inputs matter.

include "../model/general.thrift"
include "../model/hub_module.thrift"

namespace cpp lineup

/**
 * The RF inputs of a HeadendStatus, under its field numbers. Reading skips all other fields, which
 * hold the lineups a second time.
 */
struct RFInputsOfStatus {
  2: map<general.RFInputId, hub_module.SATRFInput> satRFInputs
  3: map<general.RFInputId, hub_module.TDTRFInput> tdtRFInputs
}
