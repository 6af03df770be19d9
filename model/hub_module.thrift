// The headend's configuration and status, and the service with which ControllerTask hands them out.
//
// Members stand in wire order. A field is optional only where an absent value means something of its
// own; a field with a default starts with its __isset flag true.
//
// Lists name their C++ type, which is the generator's own choice, because the reader generated for a
// named type lets the list grow as elements arrive. Otherwise it resizes the list to the count in the
// header, so that a few false bytes allocate gigabytes.

include "general.thrift"
include "module.thrift"
include "cofdm.thrift"
include "qam.thrift"
include "enc_module.thrift"
include "rfchannels.thrift"
include "simulcrypt.thrift"

namespace cpp korvel.thrift.hub_module
namespace py korvel.hub_module

// ---------------------------------------------------------------- headend-wide settings

struct HeadendGlobalConfig {
  /** 1 to 10. */
  1: i32 headendId = 1
  /** 0 standard, 1 skyit. */
  2: i32 headendType
  3: string timeZone
  4: optional general.CountryCode countryCode
  5: string headendName
  6: i32 networkId
  7: i32 originalNetworkId
  8: string networkName
}

struct InstallerInfo {
  1: string name = ""
  2: string phone = ""
  3: string email = ""
}

/** A non-standard physical layer scrambling code that satellite scans also try. */
struct PLSItem {
  /** 0 Auto, 1 Gold, 2 Root. */
  1: i32 plsType = 1
  2: i32 plsCode = 0
}

struct RFInputsScanConfig {
  1: i32 scanMode
  2: optional list<PLSItem> cpp_type "std::vector<PLSItem>" plsItemList
}

// ---------------------------------------------------------------- IP inputs

/** A transport stream received over the network. */
struct IPMux {
  /** Textual UUID of 36 characters, also the mux's key in IPInput.muxes. */
  1: string uuid
  2: string url
  3: string name
  /** Service names by DVB service id, as last scanned. */
  4: map<i32, string> services
  /** SMPTE 2022-1 error correction, 0 for none. */
  5: i32 fecColumns
  6: i32 fecRows
}

/** One interface of an IP input module. */
struct IPInput {
  1: optional i32 slot
  2: optional i32 interfaceId
  3: string address
  4: string netmask
  5: map<string, IPMux> muxes
}

// ---------------------------------------------------------------- lineup: global settings

struct LineupDRMLynkConfig {
  1: bool enabled
}

struct LineupDRMVSecureConfig {
  1: bool enabled
  /** Seconds. */
  2: double keyPeriod
}

struct LineupDRMSimulCryptConfig {
  1: simulcrypt.Config config
}

struct LineupDRMProIdiomConfig {
  1: string keySet
  2: list<i32> cpp_type "std::vector<int32_t>" serviceKeys
}

struct LineupDRMConfig {
  1: bool combinedFlag
  2: LineupDRMLynkConfig lynkConfig
  3: LineupDRMVSecureConfig vsecureConfig
  4: LineupDRMSimulCryptConfig simulCryptConfig
  5: LineupDRMProIdiomConfig proIdiomConfig
}

struct LineupGlobalConfig {
  1: bool globalFlag
  2: LineupDRMConfig drmConfig
  /** ISO 639-2 codes, most wanted first. */
  3: list<string> cpp_type "std::vector<std::string>" preferredLanguages
  /** 0 off, 1 actual, 2 others. */
  4: i32 eitMode = 1
  /** 1 video, 2 sub, 3 ttx. */
  5: i32 decryptPolicy = 1
  6: bool cofdmScanEnabled = false
  7: bool qamsScanEnabled = false
  8: bool totEnabled = true
  9: bool lcnEnabled = true
}

// ---------------------------------------------------------------- lineup: outputs

struct LineupIPConfig {
  1: string interfaceAddress
  /** 0 UDP, 1 RTP. */
  2: i32 streamProtocol = 0
  /** 1 only TV1, 0 TV1 and TV2. */
  3: i32 outputVlan = 0
  4: string mcastRangeStart = "239.0.0.1"
  5: string mcastRangeEnd = "239.255.255.254"
  6: i32 port = 1234
}

struct LineupRFConfig {
  /** 0 COFDM, 1 QAM, 2 QAM B. */
  1: i32 modulation
  /** 0 four carriers an OUT module, 1 six. */
  2: i32 carriersPerModule
  3: cofdm.COFDMModConfig cofdmConfig
  4: qam.QAMModConfig qamConfig
  /** kHz by carrier index. */
  5: map<i32, i32> carrierFrequencies
  6: bool rfProfileFlag
}

// ---------------------------------------------------------------- lineup: services and entries

/** Which map of LineupConfig an entry's serviceKey refers to. Any other value refers to none. */
enum LineupEntryKind {
  DVB = 0
  ENC = 1
  EMPTY = 2
}

struct LineupRFEntryConfig {
  1: i32 serviceKey
  2: string name
  3: rfchannels.RFChannelInfo channelInfo
  4: LineupEntryKind serviceKind
  /** Logical channel number, 0 for none. */
  5: i32 lcn = 0
  /** DVB service id on the output, 0 to keep the input's. */
  6: i32 outputSid = 0
}

struct LineupIPEntryConfig {
  1: i32 serviceKey
  2: general.OutputAddress outputAddress
  3: string name
  4: LineupEntryKind serviceKind
  /** The output port when outputVlan splits TV1 and TV2; 0 for the headend's own choice. */
  5: i32 outputSelector
  6: bool sapAnnounced = true
}

// Of the muxes' members with numbers the console only knows the columns that they are read from
// (catalogue/tables.cpp).

struct LineupSATMux {
  /** MHz. */
  1: i32 frequency
  2: i32 satParam2
  3: i32 satParam3
  4: i32 satParam4
  5: i32 satParam5 = -1
  6: i32 satParam6 = 0
  7: i32 satParam7 = -1
}

struct LineupTDTMux {
  /** kHz. */
  1: i32 frequency
  2: i32 tdtParam2
  3: i32 tdtParam3
  4: i32 tdtParam4 = -1
}

struct LineupCableMux {
  /** kHz. */
  1: i32 frequency
  2: i32 cableParam2
  3: i32 cableParam3
}

struct DVBInputService {
  /** DVB service id. */
  1: i32 sid
  2: string name
  3: bool catalogueFlag
  /** 1 TDT, 2 SAT, 3 Cable, 4 IP. */
  4: i32 inputType
  /** DVB service_type; 1 is a television service. */
  5: i32 serviceType
  6: bool auxFlag
  7: list<string> cpp_type "std::vector<std::string>" lItems
  8: list<i32> cpp_type "std::vector<int32_t>" intItems
  9: optional LineupSATMux lineupSATMux
  10: optional LineupTDTMux lineupTDTMux
  11: optional LineupCableMux lineupCableMux
  /** The uuid of an IPMux. */
  12: optional string ipMuxUUID
  13: string providerName
}

struct DVBInputServiceConfig {
  // "service" in C++ and in what is printed; here the word is reserved (RENAME in CMakeLists.txt).
  1: DVBInputService inputService
  2: bool configFlag = true
  /** Elementary streams left out of the output, by PID. */
  3: list<i32> cpp_type "std::vector<int32_t>" filteredPids
}

struct ENCInputServiceConfig {
  1: module.ModuleChainAddress address
  2: enc_module.BasicENCSettings settings
  3: string label
}

struct EmptyInputService {
  /** The DVB service_type that the reserved slot is kept for. */
  1: i32 serviceType
}

struct EmptyInputServiceConfig {
  // Likewise.
  1: EmptyInputService inputService
}

struct LineupENCConfig {
  /** Settings of an encoder module's every input, by module slot. */
  1: map<i32, enc_module.BasicENCSettings> moduleSettings
}

struct LineupConfig {
  1: LineupGlobalConfig globalConfig
  2: LineupIPConfig ipConfig
  /** In output order. */
  3: list<LineupIPEntryConfig> cpp_type "std::vector<LineupIPEntryConfig>" ipEntries
  4: LineupRFConfig rfConfig
  /** In output order. */
  5: list<LineupRFEntryConfig> cpp_type "std::vector<LineupRFEntryConfig>" rfEntries
  6: map<i32, DVBInputServiceConfig> dvbInputServices
  7: map<i32, ENCInputServiceConfig> encInputServices
  8: LineupENCConfig encConfig
  9: map<i32, EmptyInputServiceConfig> emptyInputServices
}

/** The whole configuration of a headend: what is fetched, edited, committed and saved. */
struct HeadendConfig {
  1: LineupConfig lineupConfig
  2: HeadendGlobalConfig headendGlobalConfig
  3: InstallerInfo installerInfo
  4: RFInputsScanConfig rfInputsScanConfig
  5: map<string, IPInput> ipInputs
}

// ---------------------------------------------------------------- status

struct SATRFInputConfig {
  1: general.LNBConfiguration lnb
  2: bool enabled
}

struct SATRFInput {
  1: SATRFInputConfig config
  2: bool locked
  /** Tenths of a dB. */
  3: i32 carrierToNoise
}

struct TDTRFInputConfig {
  /** Antenna supply in volts: 0, 5, 12 or 24. */
  1: i32 antennaVoltage
  2: bool enabled
}

struct TDTRFInput {
  1: TDTRFInputConfig config
  2: bool locked
  /** Tenths of a dB. */
  3: i32 carrierToNoise
}

struct LineupIPStatus {
  1: LineupIPConfig config
  /** Kilobits a second. */
  2: i32 totalBitrate
}

struct LineupRFStatus {
  1: LineupRFConfig config
  2: i32 carriersInUse
}

struct LineupRFEntryStatus {
  1: LineupRFEntryConfig config
  2: bool running
  3: i32 bitrate
}

struct LineupENCStatus {
  1: LineupENCConfig config
}

struct LineupDRMSimulCryptStatus {
  1: simulcrypt.Status status
}

struct LineupDRMStatus {
  1: LineupDRMSimulCryptStatus simulCryptStatus
}

/** The lineup as it runs: the configuration records beside their state. */
struct LineupStatus {
  1: LineupGlobalConfig globalConfig
  /** Bits a second by output carrier. */
  2: map<i32, i32> carrierBitrates
  3: LineupIPStatus ipStatus
  4: LineupRFStatus rfStatus
  5: list<LineupRFEntryStatus> cpp_type "std::vector<LineupRFEntryStatus>" rfEntries
  6: map<i32, DVBInputServiceConfig> dvbInputServices
  7: map<i32, ENCInputServiceConfig> encInputServices
  8: LineupENCStatus encStatus
  9: LineupDRMStatus drmStatus
}

struct FanStatus {
  1: i32 rpm
  2: bool failed
}

struct BaseStatus {
  1: string serialNumber
  2: string firmwareVersion
  /** Degrees Celsius. */
  3: i32 temperature
  /** Seconds. */
  4: i64 uptime
  5: set<general.AlarmCode> alarms
  6: list<FanStatus> cpp_type "std::vector<FanStatus>" fans
}

struct InModuleStatus {
  1: i32 lockedTuners
}

struct SecModuleStatus {
  1: bool camPresent
  2: string camName
}

struct OutModuleStatus {
  1: i32 carriers
  /** Tenths of a dBuV. */
  2: i32 outputLevel
}

struct EncModuleStatus {
  1: list<bool> cpp_type "std::vector<bool>" hdmiPresent
}

struct IPModuleStatus {
  1: bool linkUp
  /** Kilobits a second. */
  2: i32 receivedBitrate
}

struct HubModuleStatus {
  1: map<module.ModuleSlot, InModuleStatus> inModules
  2: map<module.ModuleSlot, SecModuleStatus> secModules
  3: map<module.ModuleSlot, OutModuleStatus> outModules
  4: map<module.ModuleSlot, EncModuleStatus> encModules
  5: map<module.ModuleSlot, IPModuleStatus> ipModules
}

struct TVOutStatus {
  1: bool tv1LinkUp
  2: bool tv2LinkUp
}

struct StreamingNetworkConfig {
  1: string address
  2: string netmask
  3: string gateway
}

struct StreamingNetworkStatus {
  1: StreamingNetworkConfig config
  2: bool linkUp
}

struct DeviceManagerConfig {
  1: bool enabled
  2: string host
  3: i32 port
}

struct DeviceManagerStatus {
  1: DeviceManagerConfig config
  2: bool connected
}

struct RFInputsScanStatus {
  1: RFInputsScanConfig config
  2: bool scanning
  /** Percent. */
  3: i32 progress
}

/** The headend's connection to its remote management server. */
struct KorServerConnStatus {
  1: bool connected
  2: string server
}

struct HeadendStatus {
  1: map<module.ModuleSlot, module.ModuleStatus> modules
  2: map<general.RFInputId, SATRFInput> satRFInputs
  3: map<general.RFInputId, TDTRFInput> tdtRFInputs
  4: map<string, IPInput> ipInputs
  5: LineupStatus lineupStatus
  6: BaseStatus baseStatus
  7: HubModuleStatus hubModuleStatus
  8: TVOutStatus tvOutStatus
  9: HeadendGlobalConfig headendGlobalConfig
  10: InstallerInfo installerInfo
  11: StreamingNetworkStatus streamingNetworkStatus
  12: DeviceManagerStatus deviceManagerStatus
  13: RFInputsScanStatus rfInputsScanStatus
  14: KorServerConnStatus korServerConnStatus
}

// ---------------------------------------------------------------- the controller's service

/** ControllerTask is starting or busy reconfiguring; the call had no effect. */
exception ControllerTaskIsNotReady {
  1: string reason
}

service WebSrv {
  HeadendConfig getHeadendConfig() throws (1: ControllerTaskIsNotReady notReady)
  HeadendStatus getHeadendStatus() throws (1: ControllerTaskIsNotReady notReady)
  /** Takes the whole configuration over and returns the status that follows from it. */
  HeadendStatus setHeadendConfig(1: HeadendConfig config) throws (1: ControllerTaskIsNotReady notReady)
  /** Switches both terrestrial inputs. */
  void setTDTRFInputConfig(1: TDTRFInputConfig tdt1, 2: TDTRFInputConfig tdt2)
      throws (1: ControllerTaskIsNotReady notReady)
  /** Switches one satellite input. */
  void setSATRFInputConfig(1: general.RFInputId id, 2: SATRFInputConfig config)
      throws (1: ControllerTaskIsNotReady notReady)

  // Part of the controller's service, not called by the console.
  HeadendStatus setLineupConfig(1: LineupConfig config) throws (1: ControllerTaskIsNotReady notReady)
  HeadendStatus setHeadendGlobalConfig(1: HeadendGlobalConfig config)
      throws (1: ControllerTaskIsNotReady notReady)
  HeadendStatus setRFInputsScanConfig(1: RFInputsScanConfig config)
      throws (1: ControllerTaskIsNotReady notReady)
  bool validateHeadendConfig(1: HeadendConfig config) throws (1: ControllerTaskIsNotReady notReady)
  void orderRFInputsScan() throws (1: ControllerTaskIsNotReady notReady)
  void resetHeadend() throws (1: ControllerTaskIsNotReady notReady)
  void resetFactoryDefaults() throws (1: ControllerTaskIsNotReady notReady)
}
