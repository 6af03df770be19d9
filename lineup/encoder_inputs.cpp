#include "lineup/encoder_inputs.h"

#include <stdexcept>
#include <string>
#include <vector>

#include "model/lineup_editor.h"
#include "support/words.h"

namespace lineup {

namespace {

/// The number that `word` begins with. Throws std::runtime_error(`message`) if it is not in
/// `range`.
int32_t numberIn(NumberRange range, const std::string& word, const char* message) {
  const int32_t number = readNumber(word);
  if (number < range.first || number > range.last) {
    throw std::runtime_error(message);
  }
  return number;
}

}  // namespace

hub_module::ENCInputServiceConfig LineupEditor::makeEncService(
    const std::vector<std::string>& words) {
  hub_module::ENCInputServiceConfig service;
  service.address = parseEncAddress(words);
  // The settings of every encoder service that is added, in the numbering of ControllerTask.
  service.settings.videoCodec = 0;
  service.settings.videoResolution = 0;
  service.settings.videoProfile = 3;
  service.settings.audioCodec = 2;
  return service;
}

module::ModuleChainAddress LineupEditor::parseEncAddress(const std::vector<std::string>& words) {
  if (words.size() < 3) {
    throw std::runtime_error("Please give a SLOT_ID and HDMI_ID");
  }
  module::ModuleChainAddress address;
  address.slot =
      numberIn(kEncoderSlots, words[1], "Invalid module id, please enter an integer 3-12");
  address.port = numberIn(kHdmiInputs, words[2], "Invalid HDMI id, please enter an integer 0-3");
  return address;
}

}  // namespace lineup
