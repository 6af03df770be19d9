// The types of carriers that the terrestrial inputs can scan for.

#pragma once

namespace lineup {

inline constexpr const char* kCofdmScan = "COFDM";
inline constexpr const char* kQamsScan = "QAMS";

}  // namespace lineup
