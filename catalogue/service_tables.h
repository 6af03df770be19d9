// How the console uses the catalogue's four tables: which column holds what, and what it is called.

#pragma once

#include <cstddef>
#include <cstdint>

namespace lineup {

/// The catalogue, which ControllerTask writes.
inline constexpr const char* kCatalogueFile =
    "/etc/korvel/conf/ControllerTask/ControllerTask.sqlite";

/// One table. Columns are positions from 0; the columns of a service's mux are with the function
/// that copies them.
struct ServiceTable {
  const char* kind;   // as in "No SAT services found."
  int32_t inputType;  // DVBInputService.inputType

  std::size_t id;  // what "adddvb" takes
  std::size_t name;
  std::size_t sid;
  std::size_t flag;
  std::size_t serviceType;
  std::size_t textList;
  std::size_t integerList;

  std::size_t source;  // the frequency or the URL, printed between these two texts
  const char* beforeSource;
  const char* afterSource;
};

inline constexpr ServiceTable kSatTable{.kind = "SAT",
                                        .inputType = 2,
                                        .id = 15,
                                        .name = 16,
                                        .sid = 17,
                                        .flag = 18,
                                        .serviceType = 19,
                                        .textList = 23,
                                        .integerList = 24,
                                        .source = 7,
                                        .beforeSource = " FR: ",
                                        .afterSource = " MHz SID: "};

inline constexpr ServiceTable kTdtTable{.kind = "TDT",
                                        .inputType = 1,
                                        .id = 10,
                                        .name = 11,
                                        .sid = 12,
                                        .flag = 13,
                                        .serviceType = 14,
                                        .textList = 15,
                                        .integerList = 16,
                                        .source = 5,
                                        .beforeSource = " FR: ",
                                        .afterSource = " kHz SID: "};

inline constexpr ServiceTable kCableTable{.kind = "Cable",
                                          .inputType = 3,
                                          .id = 10,
                                          .name = 11,
                                          .sid = 12,
                                          .flag = 13,
                                          .serviceType = 14,
                                          .textList = 15,
                                          .integerList = 16,
                                          .source = 5,
                                          .beforeSource = " FR: ",
                                          .afterSource = " kHz SID: "};

/// A URL has no frequency; its line has the unit of the others all the same.
inline constexpr ServiceTable kIPTable{.kind = "IP",
                                       .inputType = 4,
                                       .id = 6,
                                       .name = 7,
                                       .sid = 8,
                                       .flag = 9,
                                       .serviceType = 10,
                                       .textList = 11,
                                       .integerList = 12,
                                       .source = 2,
                                       .beforeSource = " URL: ",
                                       .afterSource = " kHz SID: "};

}  // namespace lineup
