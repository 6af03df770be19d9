// Where a headend's encoder modules are, and their HDMI inputs. The operations makeEncService() and
// parseEncAddress() are declared in model/lineup_editor.h.

#pragma once

#include <cstdint>

namespace lineup {

struct NumberRange {
  int32_t first;
  int32_t last;
};

inline constexpr NumberRange kEncoderSlots{3, 12};
inline constexpr NumberRange kHdmiInputs{0, 3};  ///< of each module

}  // namespace lineup
