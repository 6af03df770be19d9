// The console's one object: the configuration being edited and the operations on it.

#pragma once

#include <cstdint>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include "hub_module_types.h"
#include "model/namespaces.h"

namespace lineup {

/// Edits one HeadendConfig for the length of a run. Created by main, used by one thread.
///
/// Operations change `config` in memory and set `pendingChanges`. The controller gets the edits by
/// commitHeadendConfig(), which restoreConfig() and runTypeMode() call; RF inputs are switched by
/// calls of their own. Unless an operation says otherwise:
///  - what the user is told goes to std::cout, each line flushed;
///  - a refused argument or a failed lookup is thrown as std::runtime_error whose what() is the
///    whole text for the user, and `config` is then as it was;
///  - numbers are the controller's signed 32-bit integers;
///  - where it waits or prints line by line, a signal that was caught throws EndedBySignal.
/// The operations are defined in the folders named above each group.
class LineupEditor {
 public:
  hub_module::HeadendConfig config;  ///< as edited
  hub_module::HeadendStatus status;  ///< as last fetched
  bool pendingChanges = false;       ///< whether `config` has edits that were not committed
  /// The RFInputId values of the inputs that the groups TDTALL and SATALL stand for.
  const std::vector<int32_t> tdtInputIds{general::RFInputId::TDT1, general::RFInputId::TDT2};
  const std::vector<int32_t> satInputIds{general::RFInputId::SAT1, general::RFInputId::SAT2,
                                         general::RFInputId::SAT3, general::RFInputId::SAT4,
                                         general::RFInputId::SAT5, general::RFInputId::SAT6,
                                         general::RFInputId::SAT7, general::RFInputId::SAT8};
  uint64_t fetches = 0;  ///< how many times `config` was replaced by the controller's
  uint64_t commits = 0;  ///< how many times the controller took `config`
  /// The file that restoreConfig() read completely since the last fetch; else empty.
  std::string restoredFile;

  // ---- app/: the prompt and the dispatcher

  /// Fetches the running configuration, then reads and runs command lines from standard input until
  /// its end or "quit". Never commits. Errors that are not std::runtime_error pass through.
  void runPromptLoop();

  /// Fetches, sets the headend type (`typeWord`: "standard" or "skyit"), commits and says that it
  /// is set, whatever came of the commit. The message for a refused word is printed and ends the
  /// operation without a commit.
  void runTypeMode(const std::string& typeWord);

  /// Runs one command line. `quiet` silences what the "type" command says about its change. Returns
  /// false for "quit", true for every other line, unknown commands included.
  bool dispatchCommand(const std::string& line, bool quiet);

  // ---- controller/: remote calls, one connection each
  //
  // A failure of any kind prints the operation's line, which begins "ERROR: ", and is not reported
  // to the caller. A signal that is caught meanwhile throws EndedBySignal when the call is over.

  /// Replaces `config` by the controller's and clears `pendingChanges` and `restoredFile`. If the
  /// reply breaks off, `config` holds what had been read of it; on any other failure all is as it
  /// was.
  void fetchHeadendConfig();

  /// Replaces `status` by the controller's; a reply that breaks off leaves what had been read of
  /// it.
  void fetchHeadendStatus();

  /// Sends `config` and, once the controller has answered, clears `pendingChanges`.
  void commitHeadendConfig();

  /// Switches the two terrestrial inputs, which are always sent as a pair.
  void sendTDTRFInputConfig(const hub_module::TDTRFInputConfig& tdt1,
                            const hub_module::TDTRFInputConfig& tdt2);

  /// Switches the satellite input `id` (3 to 10).
  void sendSATRFInputConfig(general::RFInputId::type id,
                            const hub_module::SATRFInputConfig& satConfig);

  // ---- controller/: configuration files

  /// Writes the configuration to `path`: the controller's, fetched first, when nothing is pending,
  /// else the edited one. Says "Saved config to: " even if that failed, unless a signal cut it
  /// short, which throws EndedBySignal.
  void saveConfig(const std::string& path);

  /// Reads `path` over `config` and commits at once, whatever came of the reading. Says "Restored
  /// config from: " even if reading or committing failed. A signal that cuts the reading short, or
  /// an interrupt before the controller has taken it, throws EndedBySignal and leaves `config` as
  /// it was.
  void restoreConfig(const std::string& path);

  // ---- print/: the command "show"

  /// Prints `config` field by field.
  void showLineup() const;

  // ---- catalogue/: finding available services and storing them
  //
  // `name` is a part of the service name, inserted into the select as typed. The catalogue is read
  // only. A table that cannot be read counts as one without a match, after three attempts with
  // waits of six seconds in all; each failure is said on standard error.

  void findTdtServices(const std::string& name) const;
  void findSatServices(const std::string& name) const;
  void findCableServices(const std::string& name) const;
  void findIPServices(const std::string& name) const;
  /// The four above, in this order.
  void findServices(const std::string& name) const;

  /// Stores the service with the catalogue id `id` from the first table that has it (satellite,
  /// terrestrial, cable, IP) and returns its key. Throws std::runtime_error "Service not found"; a
  /// malformed integer list throws what std::stoi does and ends the search.
  int32_t addCatalogueService(int32_t id);

  // ---- lineup/: entries of the RF and IP lineups

  /// The smallest integer of at least 1 that is not a key of `services`, which may have any other
  /// keys.
  template <class Service>
  static int32_t allocateServiceKey(const std::map<int32_t, Service>& services);

  /// The encoder service that a command line describes: the address of parseEncAddress() and the
  /// console's fixed encoder settings. Throws what parseEncAddress() throws.
  static hub_module::ENCInputServiceConfig makeEncService(const std::vector<std::string>& words);

  /// The HDMI input that a command line names: words[0] is the command, words[1] the slot of the
  /// encoder module (3 to 12), words[2] its HDMI input (0 to 3). Throws std::runtime_error with the
  /// text for the user if a word is missing or out of range.
  static module::ModuleChainAddress parseEncAddress(const std::vector<std::string>& words);

  /// Stores `service` under the smallest free key of `dvbInputServices` and returns the key.
  int32_t storeDVBService(hub_module::DVBInputServiceConfig service);

  /// Stores a copy under the smallest free key of `encInputServices` and returns the key.
  int32_t addEncService(const hub_module::ENCInputServiceConfig& enc);

  /// Stores a reservation for a service of DVB service_type `serviceType` and returns its key in
  /// `emptyInputServices`; addRFEntry() gives it a slot.
  int32_t addEmptyService(int32_t serviceType);

  /// The DVB service_type of the service that `kind` and `key` name: 1 for ENC, even if there is no
  /// such service; for other kinds 0 if there is none.
  int32_t entryServiceType(int32_t key, hub_module::LineupEntryKind::type kind) const;

  /// Names the entry after its service; the name is empty if there is no such service.
  void entryName(hub_module::LineupRFEntryConfig& entry) const;
  void entryName(hub_module::LineupIPEntryConfig& entry) const;

  /// Appends an entry to the IP lineup.
  void addIPEntry(int32_t key, hub_module::LineupEntryKind::type kind);

  /// Puts a service into the first slot of the RF lineup reserved for its type, which keeps its
  /// place and its name, or appends an entry if there is none. A reservation (EMPTY) is always
  /// appended.
  void addRFEntry(int32_t key, hub_module::LineupEntryKind::type kind);

  /// Empties both lineups and the DVB and encoder services; reservations stay. Sets
  /// `pendingChanges` only if there was something to remove.
  void clearLineup();

  // ---- lineup/: IP muxes

  /// Adds a mux with a fresh UUID to the IP input at `slot` and `interface`. Throws
  /// std::runtime_error if there is no such input or it already has a mux of this URL.
  void addIPMux(int32_t slot, int32_t interface, const std::string& url);

  // ---- lineup/: RF inputs, switched at once and not part of `config`

  /// Fetches the status and prints which inputs are switched on.
  void getRFInputState();

  /// Switches the input, or the group, that `name` gives ("TDT1", "SAT3", "TDTALL", in upper or
  /// lower case), waits 1.25 s and prints the table. Any other name is answered by a line on
  /// std::cout, and nothing is sent. An input that the status lacks throws std::out_of_range, which
  /// ends the console; what was sent before it stays sent.
  void setRFInputState(bool enable, const std::string& name);

  // ---- lineup/: scan settings

  /// Prints which carrier types the terrestrial inputs scan for.
  void showTdtScan() const;

  /// Sets whether carriers of `type` ("COFDM" or "QAMS", in upper or lower case; upper-cased in
  /// place) are scanned for.
  void setTdtScan(bool enable, std::string& type);

  /// Asks for a PLS item, reads one line of standard input and appends the item. Throws
  /// std::runtime_error for fewer than two words, and so for the end of input. Words are taken by
  /// readNumber(), without a range.
  void addPlsItem();

  /// Removes every item of the PLS list, if there is a list.
  void clearPlsItems();
};

// The search starts at the highest key, because the keys in use are almost always 1, 2, 3 and so on
// without a gap: then one look is enough, however many services there are.
template <class Service>
int32_t LineupEditor::allocateServiceKey(const std::map<int32_t, Service>& services) {
  const auto notPositive = std::distance(services.begin(), services.lower_bound(1));
  // The n-th positive key is n exactly when every key from 1 to n is in use.
  auto n = static_cast<int32_t>(services.size()) - static_cast<int32_t>(notPositive);
  auto next = services.end();
  while (n > 0 && std::prev(next)->first != n) {
    --next;
    --n;
  }
  return n + 1;
}

}  // namespace lineup
