// The kinds of input that DVB services are received from.

#pragma once

#include <array>
#include <cstdint>

namespace lineup {

struct InputType {
  int32_t number;    ///< DVBInputService.inputType
  const char* name;  ///< as people read it
  const char* unit;  ///< of its muxes' frequency, after a blank; empty where a mux has a URL
};

inline constexpr InputType kTdtInput{1, "TDT", " kHz"};
inline constexpr InputType kSatInput{2, "SAT", " MHz"};
inline constexpr InputType kCableInput{3, "Cable", " kHz"};
inline constexpr InputType kIPInput{4, "IP", ""};

inline constexpr std::array kInputTypes{kTdtInput, kSatInput, kCableInput, kIPInput};

}  // namespace lineup
