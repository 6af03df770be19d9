// fuzz_make_seeds FOLDER: writes the seeds that are made from a real headend's records into
// FOLDER/reply and FOLDER/config_file. The other seeds are written by hand.

#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

#include "WebSrv.h"
#include "simulator/initial_state.h"
#include "simulator/status.h"
#include "tests/support/encoding.h"

namespace {

namespace fs = std::filesystem;
namespace hub_module = korvel::thrift::hub_module;
using apache::thrift::protocol::T_EXCEPTION;
using apache::thrift::protocol::T_REPLY;
using apache::thrift::protocol::TMessageType;
using namespace lineup::test;

/// A headend with a service of every kind in both lineups.
hub_module::HeadendConfig withLineup(hub_module::HeadendConfig config) {
  hub_module::LineupConfig& lineup = config.lineupConfig;
  hub_module::DVBInputServiceConfig dvb;
  dvb.service.sid = 4101;
  dvb.service.name = "Velaria Uno";
  dvb.service.inputType = 2;
  dvb.service.serviceType = 1;
  dvb.service.lItems = {"spa", "eng"};
  dvb.service.intItems = {101, 102, 103};
  dvb.service.__set_lineupSATMux({});
  lineup.dvbInputServices[0] = dvb;
  dvb.service.__isset.lineupSATMux = false;
  dvb.service.__set_lineupTDTMux({});
  dvb.service.__set_lineupCableMux({});
  dvb.service.__set_ipMuxUUID("7a4e9b52-0c1d-4f7e-9a33-5d1f0c2b8e61");
  lineup.dvbInputServices[1] = dvb;
  lineup.encInputServices[0].label = "HDMI 1";
  lineup.encConfig.moduleSettings[3] = {};
  lineup.emptyInputServices[0].service.serviceType = 25;
  for (const auto kind : {hub_module::LineupEntryKind::DVB, hub_module::LineupEntryKind::ENC,
                          hub_module::LineupEntryKind::EMPTY}) {
    hub_module::LineupRFEntryConfig rf;
    rf.serviceKind = kind;
    rf.name = "Entry";
    lineup.rfEntries.push_back(rf);
    hub_module::LineupIPEntryConfig ip;
    ip.serviceKind = kind;
    lineup.ipEntries.push_back(ip);
  }
  config.headendGlobalConfig.__set_countryCode(korvel::thrift::general::CountryCode::SPAIN);
  config.rfInputsScanConfig.__set_plsItemList({{}, {}});
  return config;
}

void write(const fs::path& path, const std::string& bytes) {
  fs::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << bytes;
}

template <class Result, class Record>
std::string success(const Record& record) {
  Result result;
  result.success = record;
  result.__isset.success = true;
  return toBinary(result);
}

template <class Result>
std::string refusal() {
  Result result;
  result.notReady.reason = "starting";
  result.__isset.notReady = true;
  return toBinary(result);
}

std::string reply(const std::string& method, TMessageType type, const std::string& body) {
  return framed(binaryMessage(method, type, 0, body));
}

// The first byte of a reply; see reply_fuzzer.cpp.
constexpr char kConfigCall = 0;
constexpr char kStatusCall = 1;
constexpr char kBareResult = 0x08;
constexpr char kSmallPieces = 0x20;

void writeReplies(const fs::path& folder, const hub_module::HeadendConfig& config,
                  const hub_module::HeadendStatus& status) {
  const std::string configResult = success<hub_module::WebSrv_getHeadendConfig_result>(config);
  const std::string statusResult = success<hub_module::WebSrv_getHeadendStatus_result>(status);
  const std::string notReady = refusal<hub_module::WebSrv_getHeadendConfig_result>();
  const auto bare = [](char call) { return std::string(1, static_cast<char>(call | kBareResult)); };
  write(folder / "config", bare(kConfigCall) + configResult);
  write(folder / "status", bare(kStatusCall) + statusResult);
  write(folder / "config-not-ready", bare(kConfigCall) + notReady);
  write(folder / "config-framed",
        std::string(1, kConfigCall) + reply("getHeadendConfig", T_REPLY, configResult));
  write(folder / "status-in-pieces", std::string(1, kSmallPieces | kStatusCall) +
                                         reply("getHeadendStatus", T_REPLY, statusResult));
  write(folder / "set-config",
        std::string(1, 2) + reply("setHeadendConfig", T_REPLY, statusResult));
  write(folder / "set-tdt",
        std::string(1, 3) + reply("setTDTRFInputConfig", T_REPLY, std::string(1, kFieldStop)));
  write(folder / "set-sat",
        std::string(1, 4) + reply("setSATRFInputConfig", T_REPLY, std::string(1, kFieldStop)));
  const std::string unknownMethod(
      "\x0b\x00\x01\x00\x00\x00\x04oops\x08\x00\x02\x00\x00\x00\x01\x00", 19);
  write(folder / "exception",
        std::string(1, kConfigCall) + reply("getHeadendConfig", T_EXCEPTION, unknownMethod));
}

}  // namespace

// NOLINTNEXTLINE(bugprone-exception-escape): what cannot be written ends the program
int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: fuzz_make_seeds FOLDER" << std::endl;
    return EXIT_FAILURE;
  }
  const fs::path folder = argv[1];
  lineup::simulator::HeadendState state = lineup::simulator::initialState();
  state.config = withLineup(state.config);
  writeReplies(folder / "reply", state.config,
               lineup::simulator::statusOf(state, {}, std::chrono::seconds(1)));
  write(folder / "config_file" / "lineup.json", toJson(state.config));
  write(folder / "config_file" / "initial.json", toJson(lineup::simulator::initialState().config));
  write(folder / "config_file" / "default.json", toJson(hub_module::HeadendConfig()));
  return EXIT_SUCCESS;
}
