#pragma once

namespace lineup::test {

/// The distance between the cases of a long series that are tried: each one as released, every
/// seventh with sanitizers, where they take ten times as long.
#ifdef SANITIZED
inline constexpr int kCaseStep = 7;
#else
inline constexpr int kCaseStep = 1;
#endif

}  // namespace lineup::test
