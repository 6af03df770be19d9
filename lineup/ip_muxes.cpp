#include <uuid/uuid.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <stdexcept>
#include <string>

#include "model/lineup_editor.h"

namespace lineup {

namespace {

/// A fresh random UUID in its text form of 36 characters.
std::string randomUuid() {
  uuid_t uuid;
  uuid_generate(uuid);
  std::array<char, UUID_STR_LEN> text;
  uuid_unparse(uuid, text.data());
  return text.data();
}

}  // namespace

void LineupEditor::addIPMux(int32_t slot, int32_t interface, const std::string& url) {
  const std::string place = std::to_string(slot) + "/" + std::to_string(interface);
  auto& inputs = config.ipInputs;
  const auto input = std::find_if(inputs.begin(), inputs.end(), [&](const auto& candidate) {
    const hub_module::IPInput& ip = candidate.second;
    return ip.__isset.slot && ip.slot == slot && ip.__isset.interfaceId &&
           ip.interfaceId == interface;
  });
  if (input == inputs.end()) {
    throw std::runtime_error("No IP input found for " + place);
  }
  auto& muxes = input->second.muxes;
  if (std::any_of(muxes.begin(), muxes.end(),
                  [&](const auto& mux) { return mux.second.url == url; })) {
    throw std::runtime_error("Mux URL '" + url + "' has already been set in " + place);
  }
  hub_module::IPMux mux;
  mux.uuid = randomUuid();
  mux.url = url;
  muxes[mux.uuid] = mux;
  pendingChanges = true;
}

}  // namespace lineup
