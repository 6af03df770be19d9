#include "catalogue/tables.h"

#include <cstdint>

#include "catalogue/select.h"

namespace korveldb {

namespace {

using korvel::thrift::hub_module::DVBInputService;
using korvel::thrift::hub_module::LineupCableMux;
using korvel::thrift::hub_module::LineupSATMux;
using korvel::thrift::hub_module::LineupTDTMux;

/// A member of a mux and the column that fills it.
template <class Mux>
struct MuxColumn {
  int32_t Mux::*member;
  std::size_t column;
};

constexpr MuxColumn<LineupSATMux> kSatMux[] = {
    {&LineupSATMux::frequency, 7},  {&LineupSATMux::satParam2, 2},  {&LineupSATMux::satParam3, 4},
    {&LineupSATMux::satParam4, 8},  {&LineupSATMux::satParam5, 11}, {&LineupSATMux::satParam6, 12},
    {&LineupSATMux::satParam7, 13},
};
constexpr MuxColumn<LineupTDTMux> kTdtMux[] = {
    {&LineupTDTMux::frequency, 5},
    {&LineupTDTMux::tdtParam2, 6},
    {&LineupTDTMux::tdtParam3, 7},
    {&LineupTDTMux::tdtParam4, 8},
};
constexpr MuxColumn<LineupCableMux> kCableMux[] = {
    {&LineupCableMux::frequency, 5},
    {&LineupCableMux::cableParam2, 6},
    {&LineupCableMux::cableParam3, 7},
};
constexpr std::size_t kIPMuxUuid = 1;

template <class Mux, std::size_t kMembers>
Mux muxOf(const tRow& row, const MuxColumn<Mux> (&columns)[kMembers]) {
  Mux mux;
  for (const auto& [member, column] : columns) {
    mux.*member = row.asInt(column);
  }
  return mux;
}

}  // namespace

constinit const tTable kSatTable{
    .name = "availableSatService",
    .columnTypes = "IIISISIIIIIIIISISIIISIISS",
    .doSelect = tAvailableSatService::doSelect,
    .input = lineup::kSatInput,
    .id = 15,
    .serviceName = 16,
    .sid = 17,
    .flag = 18,
    .serviceType = 19,
    .textList = 23,
    .integerList = 24,
    .source = 7,
    .beforeSource = " FR: ",
    .afterSource = " MHz SID: ",
    .setMux = [](DVBInputService& service,
                 const tRow& row) { service.__set_lineupSATMux(muxOf(row, kSatMux)); },
};

constinit const tTable kTdtTable{
    .name = "availableTdtService",
    .columnTypes = "IIIIIIIIISISIIISS",
    .doSelect = tAvailableTdtService::doSelect,
    .input = lineup::kTdtInput,
    .id = 10,
    .serviceName = 11,
    .sid = 12,
    .flag = 13,
    .serviceType = 14,
    .textList = 15,
    .integerList = 16,
    .source = 5,
    .beforeSource = " FR: ",
    .afterSource = " kHz SID: ",
    .setMux = [](DVBInputService& service,
                 const tRow& row) { service.__set_lineupTDTMux(muxOf(row, kTdtMux)); },
};

constinit const tTable kCableTable{
    .name = "availableCableService",
    .columnTypes = "IIIIIIIIIIISIIISS",
    .doSelect = tAvailableCableService::doSelect,
    .input = lineup::kCableInput,
    .id = 10,
    .serviceName = 11,
    .sid = 12,
    .flag = 13,
    .serviceType = 14,
    .textList = 15,
    .integerList = 16,
    .source = 5,
    .beforeSource = " FR: ",
    .afterSource = " kHz SID: ",
    .setMux = [](DVBInputService& service,
                 const tRow& row) { service.__set_lineupCableMux(muxOf(row, kCableMux)); },
};

constinit const tTable kIPTable{
    .name = "availableIPService",
    .columnTypes = "ISSIISISIIISS",
    .doSelect = tAvailableIPService::doSelect,
    .input = lineup::kIPInput,
    .id = 6,
    .serviceName = 7,
    .sid = 8,
    .flag = 9,
    .serviceType = 10,
    .textList = 11,
    .integerList = 12,
    .source = 2,
    .beforeSource = " URL: ",
    .afterSource = " kHz SID: ",  // a URL has no frequency; the line has the unit all the same
    .setMux = [](DVBInputService& service,
                 const tRow& row) { service.__set_ipMuxUUID(row.asText(kIPMuxUuid)); },
};

}  // namespace korveldb
