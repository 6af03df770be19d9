// Where a headend's controller and its catalogue are found.

#pragma once

namespace lineup {

/// ControllerTask's Thrift service.
inline constexpr const char* kControllerAddress = "127.0.0.1";
inline constexpr int kControllerPort = 9190;

/// The catalogue, a SQLite file in ControllerTask's folder.
inline constexpr const char* kCataloguePath =
    "/etc/korvel/conf/ControllerTask/ControllerTask.sqlite";

}  // namespace lineup
