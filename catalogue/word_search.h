// Services of the catalogue by words in their names.

#pragma once

#include <string>
#include <vector>

namespace lineup {

/// A service as the catalogue has it; texts are those of its cells, empty for an SQL NULL.
struct FoundService {
  std::string number;  ///< what "adddvb" takes
  std::string name;
  std::string input;      ///< its table: "SAT", "TDT", "Cable" or "IP"
  std::string source;     ///< "11778 MHz", "474000 kHz", or a URL
  std::string sid;        ///< DVB service id
  std::string takenFrom;  ///< the table from which "adddvb" takes this number
};

/// The services whose names hold every one of `words`, in the order of the tables that "adddvb"
/// follows. Capital and small letters are the same; nothing else in a word has a meaning of its
/// own. A locked catalogue is waited for, six seconds at most. Throws std::runtime_error, with the
/// file in its message, if the catalogue cannot be read.
std::vector<FoundService> findServicesByWords(const std::vector<std::string>& words);

}  // namespace lineup
