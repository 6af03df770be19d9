// What the simulated headend keeps across restarts.

include "../model/general.thrift"
include "../model/hub_module.thrift"

namespace cpp lineup.simulator

/** The whole state file. Its field numbers are no HeadendConfig's, so that none is taken for it. */
struct HeadendState {
  101: required hub_module.HeadendConfig config
  /** The RF inputs are switched by calls of their own and are no part of the configuration. */
  102: required map<general.RFInputId, hub_module.TDTRFInput> tdtRFInputs
  103: required map<general.RFInputId, hub_module.SATRFInput> satRFInputs
}
