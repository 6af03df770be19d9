// Where a headend's controller and its catalogue are found.

#pragma once

namespace lineup {

/// ControllerTask's Thrift service.
inline constexpr const char* kControllerAddress = "127.0.0.1";
inline constexpr int kControllerPort = 9190;

/// ControllerTask's folder, and the catalogue in it, a SQLite file.
inline constexpr const char* kCatalogueFolder = "/etc/korvel/conf/ControllerTask";
inline constexpr const char* kCataloguePath =
    "/etc/korvel/conf/ControllerTask/ControllerTask.sqlite";

}  // namespace lineup
