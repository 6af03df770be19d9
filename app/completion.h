// Completion of the arguments of commands. Each function returns the candidates for `typed`, an
// argument or the beginning of one.

#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "model/lineup_editor.h"
#include "model/settings.h"
#include "terminal/line_input.h"

namespace lineup {

/// Adds `word` if it begins with `typed`.
void offer(std::string_view word, std::string_view typed, std::vector<Candidate>& candidates,
           const std::string& note = "");

std::vector<Candidate> completeChoice(const Setting& setting, const std::string& typed);

/// Case-insensitive, as the commands read the names.
std::vector<Candidate> completeRFInput(const std::string& typed);
std::vector<Candidate> completeScanType(const std::string& typed);

/// The slots that encoder modules may be in and, after one, their HDMI inputs. Completes the last
/// of `words`, the arguments of the command.
std::vector<Candidate> completeEncoder(std::span<const std::string> words,
                                       const hub_module::HeadendConfig& config);

/// Likewise the slots of the IP inputs in `config` and, after one, its interfaces, each with its
/// address.
std::vector<Candidate> completeIPInput(std::span<const std::string> words,
                                       const hub_module::HeadendConfig& config);

/// Files and folders, a folder with a slash after it. Names that cannot be typed, for a blank or a
/// control character in them, are left out, and hidden ones until their dot is typed. Of the state
/// folder, in which the console has other files of its own, only configurations.
std::vector<Candidate> completeFile(const std::string& typed);

/// Names of the catalogue's services of `input`, or of every input if it is empty, as "find" takes
/// them: '_', which stands for any character there, in place of what cannot be typed in one, and
/// likewise in `typed`. If none begins with `typed`, in any case of ASCII letters, those that have
/// it elsewhere.
std::vector<Candidate> completeName(std::string_view input, const std::string& typed);

/// The DVB service types of the catalogue's services.
std::vector<Candidate> completeServiceType(const std::string& typed);

/// Ids of the catalogue, each with the name of its service. If none begins with `typed`, those of
/// the services that have it in their names, in any case of ASCII letters.
std::vector<Candidate> completeService(const std::string& typed);

}  // namespace lineup
