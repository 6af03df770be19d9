#include "compare/described_service.h"

#include "model/services.h"
#include "print/printed_text.h"

namespace lineup {

namespace {

template <class Mux>
void copyPlace(Mux& other, const Mux& mux, const AlsoDescribed& /*also*/) {
  other.frequency = mux.frequency;
}

void copyPlace(std::string& other, const std::string& uuid, const AlsoDescribed& also) {
  if (also.muxUuid) {
    other = uuid;
  }
}

}  // namespace

std::string described(const ServiceWords& words, const std::string& name) {
  std::string text = inQuotes(name) + ", " + words.kind;
  text += words.source.empty() ? "" : " " + printable(words.source);
  text += words.sid.empty() ? "" : ", SID " + words.sid;
  return text + (words.serviceType.empty() ? "" : ", type " + words.serviceType);
}

void copyDescribedFields(hub_module::DVBInputServiceConfig& other,
                         const hub_module::DVBInputServiceConfig& service,
                         const AlsoDescribed& also) {
  hub_module::DVBInputService& taken = other.service;
  const hub_module::DVBInputService& from = service.service;
  taken.sid = from.sid;
  taken.inputType = from.inputType;
  taken.serviceType = from.serviceType;
  if (also.name) {
    taken.name = from.name;
  }
  // A mux that only one of the two has differs as a whole.
  visitMuxes(from, [&](const InputType& /*type*/, auto mux, auto /*setMux*/) {
    copyPlace(taken.*mux, from.*mux, also);
  });
}

void copyDescribedFields(hub_module::ENCInputServiceConfig& other,
                         const hub_module::ENCInputServiceConfig& service,
                         const AlsoDescribed& /*also*/) {
  other.address = service.address;
}

void copyDescribedFields(hub_module::EmptyInputServiceConfig& other,
                         const hub_module::EmptyInputServiceConfig& service,
                         const AlsoDescribed& /*also*/) {
  other.service.serviceType = service.service.serviceType;
}

std::string notDescribed(const hub_module::DVBInputServiceConfig& service,
                         const AlsoDescribed& also) {
  // The words give the place in a mux, and with the kind of input which mux that is: a mux of
  // another kind is not covered.
  hub_module::DVBInputServiceConfig expected;
  visitMuxes(service.service, [&](const InputType& type, auto /*mux*/, auto setMux) {
    if (type.number == service.service.inputType) {
      (expected.service.*setMux)({});
    }
  });
  return notDescribed(service, also, expected);
}

}  // namespace lineup
