// The simulated notebook as plain data: what is plugged in, what is active, what Windows would
// remember. Every face of the simulator (display settings, display configuration, SetupAPI, ...)
// reads and writes this one model, so that a switch made through one interface is seen through all
// others. No policy lives here.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace sim {

/// A display mode: pixels, bits per pixel, Hz.
struct DisplayMode {
  uint32_t width = 0;
  uint32_t height = 0;
  uint32_t bits = 32;
  uint32_t frequency = 60;
};
bool operator==(const DisplayMode& a, const DisplayMode& b);

/// What GetVersionEx and GetProductInfo answer.
struct WindowsVersion {
  uint32_t major = 6;
  uint32_t minor = 1;
  uint32_t build = 7601;
  uint8_t product_type = 1;  // 1 workstation, 2 domain controller, 3 server
  std::optional<uint32_t> product =
      48;                    // GetProductInfo's value; absent: Kernel32 has no such entry
  std::string service_pack;  // "Service Pack 1"
  bool HasDisplayConfig() const { return major > 6 || (major == 6 && minor >= 1); }
};

/// One picture across several displays of an AMD adapter, as its driver keeps it ("SLS map").
struct AmdSlsMap {
  uint32_t rows = 1;
  uint32_t columns = 2;
  std::vector<std::string> connectors;  // row by row
  std::vector<DisplayMode> native;      // sizes of the whole picture
  std::vector<DisplayMode> bezel;
  std::vector<DisplayMode> transient;
};

/// What AMD's driver brought with it, and what it says.
struct AmdDriver {
  bool adl_library = true;                   // atiadlxx.dll lies in the system folder
  std::string adl_version = "8.14.10.1120";  // its file version; "": it has none
  bool legacy_library = true;                // AtiPdl64.dll
  std::vector<uint32_t> adl_indices;         // iAdapterIndex by source; empty: in order
  uint32_t powerxpress = 0;                  // version of PowerXpress; 0: none
  uint32_t active_gpu = 2;                   // with PowerXpress: 1 integrated, 2 discrete
  uint32_t switching_capability = 0;         // 1: the driver refuses to switch
  /// Ways of laying several displays out as one: rows and columns.
  std::vector<std::pair<uint32_t, uint32_t>> sls_grids;
  std::vector<AmdSlsMap> sls_maps;
};

/// An output as AMD's libraries tell of it, where that is not what goes with its technology.
struct AmdOutput {
  std::optional<uint32_t> display_type;   // ADL: iDisplayType
  std::optional<uint32_t> connector;      // ADL: iDisplayConnector
  std::optional<uint32_t> display_index;  // ADL: iDisplayLogicalIndex
  std::optional<uint32_t> legacy_type;    // legacy: EnumDisplays
  std::optional<uint32_t> legacy_kind;    // legacy: ATIDL_DisplayGetDeviceConfig
};

/// The software of USB displays: its library, and whether the service behind that does its work.
struct DisplayLinkSoftware {
  bool library = false;  // AddOnApi64.dll lies where `file` says
  std::string file = "C:\\Program Files\\DisplayLink Core Software\\AddOnApi64.dll";
  bool working = true;
};

/// A USB display as that library tells of it.
struct NivoOutput {
  uint64_t handle = 0;           // 0: by the connector's place
  uint32_t execution_state = 1;  // while it is plugged in; 6 keeps it off the desktop
  uint32_t product = 0x1000290;  // whoever has not subscribed this hears nothing of it
};

/// A graphics adapter as SetupAPI and EnumDisplayDevices list it.
struct Adapter {
  std::string name;         // "Intel(R) HD Graphics"
  std::string hardware_id;  // "PCI\\VEN_8086&DEV_0166..."; the vendor digits stand behind the first
                            // underscore
  bool hardware_id_readable = true;
  bool disabled = false;         // problem 22
  uint32_t problem = 0;          // another problem number, 0 for none
  bool root_enumerated = false;  // DN_ROOT_ENUMERATED
  bool status_readable = true;   // CM_Get_DevNode_Status answers
  bool mirroring = false;        // a mirroring driver: a display device that is none
  bool enumerated = true;        // SetupAPI lists it among the present devices
  bool vendor_library = true;    // its driver brought the vendor's programming interface
  bool usb = false;              // its displays hang on USB, and DisplayLink's software drives them
  uint32_t heads = 0;    // how many connectors it can drive at a time; 0: as many as sources
  uint32_t sources = 2;  // how many desktops it can scan out: one \\.\DISPLAYn each
  uint32_t luid_low = 0;
  int32_t luid_high = 0;
  // What NVIDIA's driver says of a notebook with two adapters.
  uint32_t nvidia_coproc_status = 0;           // 0: the outputs hang on this adapter alone
  std::optional<uint32_t> nvidia_hybrid_mode;  // which adapter leads; absent: it does not tell
  AmdDriver amd;
};

/// A monitor or panel that hangs on a connector.
struct Monitor {
  std::string name;
  std::vector<uint8_t> edid;       // empty: it has none
  std::vector<DisplayMode> modes;  // what it accepts, as EnumDisplaySettings lists it
  DisplayMode preferred;           // its native mode
};

/// One output of an adapter.
struct Connector {
  std::string id;      // the short name used in machine files and texts: "internal", "crt", "hdmi",
                       // "hdmi2", ...
  size_t adapter = 0;  // index into Model::adapters
  uint32_t technology = 0;  // DISPLAYCONFIG_VIDEO_OUTPUT_TECHNOLOGY as an unsigned number
  uint32_t target_id = 0;
  std::optional<Monitor> monitor;  // absent: nothing plugged in
  bool forced = false;  // DISPLAYCONFIG_TARGET_FORCED_AVAILABILITY_PATH is set on its paths
  bool boot_persistent =
      false;  // DISPLAYCONFIG_TARGET_FORCED_AVAILABILITY_BOOT: told to stay from boot to boot
  // On NVIDIA's adapters: the output's mask (one bit; 0: the driver's own choice by its place) and
  // the type of the plug as the driver names it (absent: the one that goes with the technology).
  uint32_t nvidia_output = 0;
  std::optional<uint32_t> nvidia_connector_type;
  // The control panel's name of the display and the kind that it says it is of; absent: by the
  // technology, and the name by its place among those of its kind.
  std::optional<std::string> nvidia_moniker;  // "#DA"
  std::optional<uint32_t> nvidia_display_type;
  AmdOutput amd;
  NivoOutput nivo;  // on an adapter for USB
};

/// What CDS_NORESET stored for a display device and the next commit takes up.
struct Staged {
  bool attached = true;
  bool primary = false;
  DisplayMode mode;
  int32_t x = 0;
  int32_t y = 0;
  uint32_t orientation = 0;
};

/// One desktop that an adapter can scan out: a \\.\DISPLAYn.
struct Source {
  size_t adapter = 0;
  uint32_t source_id = 0;
  std::string device_name;  // "\\\\.\\DISPLAY1"
  DisplayMode mode;         // meaningful while some active path starts here
  int32_t x = 0;
  int32_t y = 0;
  uint32_t orientation = 0;             // 0, 1, 2, 3: quarter turns
  std::optional<DisplayMode> registry;  // ENUM_REGISTRY_SETTINGS; absent: none stored
  std::optional<Staged> staged;         // waits for ChangeDisplaySettingsEx(NULL, NULL, ...)
};

/// An active path: this source is shown on that connector.
struct Path {
  size_t source = 0;     // index into Model::sources
  size_t connector = 0;  // index into Model::connectors
};

/// An arrangement as Windows stores it per set of connected monitors.
struct Arrangement {
  std::vector<Path> paths;
  std::vector<Source> sources;  // as Model::sources: modes and positions that go with the paths
  uint32_t topology = 0;        // 1 internal, 2 clone, 4 extend, 8 external, 0 none of these
};

/// A process in the snapshot.
struct Process {
  uint32_t id = 0;
  std::string executable;
};

/// A top-level window of some other program, with the classes of its children in order.
struct OtherWindow {
  std::string class_name;
  std::string title;
  std::vector<std::string> child_classes;
};

/// A service that the service control manager knows.
struct Service {
  std::string name;
  bool running = false;
};

/// A display of a clone group that NVIDIA's driver makes over several adapters.
struct NvidiaCloneItem {
  uint32_t flags = 0;  // bit 0: `id` is Windows' target id of a display on another adapter, and
                       // with bit 1 that of the panel; without it the driver's own display id
  uint32_t id = 0;
};
using NvidiaCloneGroup = std::vector<NvidiaCloneItem>;

struct Model {
  WindowsVersion windows;
  std::vector<Adapter> adapters;
  std::vector<Connector> connectors;
  std::vector<Source> sources;
  std::vector<Path> active;  // the topology now
  size_t primary_source = 0;
  /// The display database: the last saved arrangement for each set of connector ids with a monitor.
  std::map<std::set<std::string>, Arrangement> database;
  /// Behind it, every topology that was ever saved for such a set, the most recent one last; one
  /// per kind of topology.
  std::map<std::set<std::string>, std::vector<Arrangement>> remembered;
  /// Registry values asked for: full key path ("HKLM\\HARDWARE\\...") to value name to data. Data
  /// is "dword:12" or "dword:0x0c" for REG_DWORD, "hex:0aff" for REG_BINARY, anything else REG_SZ.
  std::map<std::string, std::map<std::string, std::string>> registry;
  std::vector<Process> processes;
  std::vector<OtherWindow> other_windows;
  std::vector<Service> services;
  DisplayLinkSoftware displaylink;
  uint32_t wave_out_devices = 1;
  /// What stands besides Windows' own topology: the groups that NVIDIA's driver was told.
  std::vector<NvidiaCloneGroup> nvidia_clone_groups;
  /// Keys that whoever starts the machine writes into Ostrel.cfg: section to key to value.
  std::map<std::string, std::map<std::string, std::string>> config;
};

/// The current topology in one line, for transcripts and tests, connectors in model order:
/// "single internal", "clone internal+crt", "extend internal+crt", "extend (internal+crt)+hdmi",
/// "none". A clone group of NVIDIA's driver stands behind it: "single internal; group
/// internal+hdmi".
std::string DescribeTopology(const Model& model);

/// Connector ids that have a monitor and whose adapter works, in model order.
std::vector<std::string> ConnectedIds(const Model& model);

}  // namespace sim
