// The calls to ControllerTask that answer with a record, of which each takes what it needs. The
// others are called on the ControllerClient itself.

#pragma once

#include "controller/controller_client.h"
#include "hub_module_types.h"
#include "model/namespaces.h"

namespace lineup {

// Each makes one call over `client`, which is for this call alone, and throws
// TException: TTransportException, TProtocolException, TApplicationException or
// ControllerTaskIsNotReady.

/// Replaces `target` by the configuration that is running. If the reply breaks off, `target` holds
/// what had been read of it; on any other failure it is as it was.
void fetchConfig(ControllerClient& client, hub_module::HeadendConfig& target);

/// Sets `target` to the configuration that is running. Also throws std::runtime_error if the reply
/// lacks a field that a configuration file has to have, as fetchConfig() would leave that at its
/// default. On any failure `target` is as it was.
void fetchCompleteConfig(ControllerClient& client, hub_module::HeadendConfig& target);

/// Replaces `target` by the status, as fetchConfig() does by the configuration.
void fetchStatus(ControllerClient& client, hub_module::HeadendStatus& target);

/// Sets `target` to an empty record with the RF inputs of the status; on any failure it is as it
/// was. The flags of both say whether the reply had them.
void fetchRFInputs(ControllerClient& client, hub_module::HeadendStatus& target);

/// Sends `config`; on return the controller has accepted it.
void sendConfig(ControllerClient& client, const hub_module::HeadendConfig& config);

}  // namespace lineup
