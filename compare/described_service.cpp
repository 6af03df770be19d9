#include "compare/described_service.h"

#include "compare/difference_lines.h"
#include "compare/printed_text.h"

namespace lineup {

namespace hub_module = korvel::thrift::hub_module;

namespace {

template <class Service>
std::string otherThanDescribed(Service expected, const Service& service,
                               const AlsoDescribed& also) {
  takeDescribed(expected, service, also);
  return expected == service ? "" : otherFields(expected, service);
}

}  // namespace

std::string described(const ServiceWords& words, const std::string& name) {
  std::string text = inQuotes(name) + ", " + words.kind;
  text += words.source.empty() ? "" : " " + printable(words.source);
  text += words.sid.empty() ? "" : ", SID " + words.sid;
  return text + (words.serviceType.empty() ? "" : ", type " + words.serviceType);
}

void takeDescribed(hub_module::DVBInputServiceConfig& other,
                   const hub_module::DVBInputServiceConfig& service, const AlsoDescribed& also) {
  hub_module::DVBInputService& taken = other.service;
  const hub_module::DVBInputService& from = service.service;
  taken.sid = from.sid;
  taken.inputType = from.inputType;
  taken.serviceType = from.serviceType;
  if (also.name) {
    taken.name = from.name;
  }
  // A mux that only one of the two has is left to be said as a whole.
  if (from.__isset.lineupSATMux) {
    taken.lineupSATMux.frequency = from.lineupSATMux.frequency;
  }
  if (from.__isset.lineupTDTMux) {
    taken.lineupTDTMux.frequency = from.lineupTDTMux.frequency;
  }
  if (from.__isset.lineupCableMux) {
    taken.lineupCableMux.frequency = from.lineupCableMux.frequency;
  }
  if (from.__isset.ipMuxUUID && also.muxUuid) {
    taken.ipMuxUUID = from.ipMuxUUID;
  }
}

void takeDescribed(hub_module::ENCInputServiceConfig& other,
                   const hub_module::ENCInputServiceConfig& service,
                   const AlsoDescribed& /*also*/) {
  other.address = service.address;
}

void takeDescribed(hub_module::EmptyInputServiceConfig& other,
                   const hub_module::EmptyInputServiceConfig& service,
                   const AlsoDescribed& /*also*/) {
  other.service.serviceType = service.service.serviceType;
}

std::string notDescribed(const hub_module::DVBInputServiceConfig& service,
                         const AlsoDescribed& also) {
  // The words do not tell the muxes of two kinds of input apart, so they say that of its own.
  hub_module::DVBInputServiceConfig expected;
  const auto& has = service.service.__isset;
  const int32_t inputType = service.service.inputType;
  expected.service.__isset.lineupTDTMux = has.lineupTDTMux && inputType == 1;
  expected.service.__isset.lineupSATMux = has.lineupSATMux && inputType == 2;
  expected.service.__isset.lineupCableMux = has.lineupCableMux && inputType == 3;
  expected.service.__isset.ipMuxUUID = has.ipMuxUUID && inputType == 4;
  return otherThanDescribed(expected, service, also);
}

std::string notDescribed(const hub_module::ENCInputServiceConfig& service,
                         const AlsoDescribed& also) {
  return otherThanDescribed({}, service, also);
}

std::string notDescribed(const hub_module::EmptyInputServiceConfig& service,
                         const AlsoDescribed& also) {
  return otherThanDescribed({}, service, also);
}

}  // namespace lineup
