// The carrier types for which terrestrial inputs scan: DVB-T (COFDM) and DVB-C (QAM).

#pragma once

namespace lineup {

inline constexpr const char* kCofdmScan = "COFDM";
inline constexpr const char* kQamsScan = "QAMS";

}  // namespace lineup
