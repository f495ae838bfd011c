// Operations on the model that every face shares: who is connected, which modes fit, how an
// arrangement is checked, completed, applied and remembered. They know the platform's rules and
// nothing of what the product wants.
#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "sim/Model.h"

namespace sim {

// The kinds of topology, as DISPLAYCONFIG_TOPOLOGY_ID numbers them.
constexpr uint32_t kTopologyInternal = 1;
constexpr uint32_t kTopologyClone = 2;
constexpr uint32_t kTopologyExtend = 4;
constexpr uint32_t kTopologyExternal = 8;

// Output technologies that the operations tell apart.
constexpr uint32_t kTechnologyHd15 = 0;
constexpr uint32_t kTechnologyComponent = 3;
constexpr uint32_t kTechnologyLvds = 6;
constexpr uint32_t kTechnologyEmbeddedDisplayPort = 11;
constexpr uint32_t kTechnologyEmbeddedUdi = 13;
constexpr uint32_t kTechnologyInternal = 0x80000000;

// --- Who is there.

/// A panel that is built in: internal, LVDS, embedded DisplayPort, embedded UDI.
bool IsInternal(uint32_t technology);
/// An analog output, which Windows can drive without having detected anything on it.
bool IsForcible(uint32_t technology);
/// Neither disabled nor in trouble nor a mirroring driver.
bool AdapterWorks(const Adapter& adapter);
/// A monitor is plugged in and its adapter works.
bool IsConnected(const Model& model, size_t connector);
/// Connected, or forced to count as such.
bool IsAvailable(const Model& model, size_t connector);
bool IsAttached(const Model& model, size_t source);
std::vector<size_t> ConnectorsOfSource(const Model& model, size_t source);  // in model order
std::optional<size_t> SourceOfConnector(const Model& model, size_t connector);
std::optional<size_t> FindConnector(const Model& model, const std::string& id);
std::optional<size_t> FindSource(const Model& model, const std::string& device_name);
std::set<std::string> ConnectedSet(const Model& model);
/// How many connectors the adapter drives at a time.
uint32_t HeadCount(const Adapter& adapter);

// --- Modes.

/// What the monitor lists; for a connector without one the sizes that Windows assumes.
std::vector<DisplayMode> ModesOfConnector(const Model& model, size_t connector);
/// The modes that all of them list, in the order of the first.
std::vector<DisplayMode> CommonModes(const Model& model, const std::vector<size_t>& connectors);
/// One connector: its native mode. Several: the largest common mode, 32 bits and 60 Hz preferred.
std::optional<DisplayMode> BestMode(const Model& model, const std::vector<size_t>& connectors);
/// The listed mode that has this size and depth, and, when it is not 0, this frequency. Without a
/// frequency 60 Hz is preferred, then the highest.
std::optional<DisplayMode> FindMode(const std::vector<DisplayMode>& modes,
                                    const DisplayMode& wanted);

// --- Arrangements.

Arrangement CurrentArrangement(const Model& model);
/// Topology number of these paths; 0 when they are a mixture or none.
uint32_t TopologyOf(const Model& model, const std::vector<Path>& paths);
/// Every path leads over one adapter from a source to an available connector, no connector is used
/// twice and no adapter drives more connectors than it can.
bool PathsAreDrivable(const Model& model, const std::vector<Path>& paths);
/// The topology of this kind that was used last with these monitors, else its default. Nothing when
/// these monitors cannot make it. `force` may have analog connectors without monitor driven to make
/// it; they are told in `forced`.
std::optional<Arrangement> NamedTopology(const Model& model, uint32_t topology, bool force,
                                         std::vector<size_t>* forced);
/// Puts every desktop that overlaps another or touches none to the right of the rest, so that
/// `primary` is at 0,0.
void PlaceDesktops(Arrangement* arrangement, size_t primary);
/// Makes the arrangement the current one. The primary is the source at 0,0.
void ApplyArrangement(Model& model, const Arrangement& arrangement);
/// Saves the current arrangement for the monitors that are connected now, in the display database
/// and in the registry settings of the display devices.
void RememberCurrent(Model& model);

// --- Attaching and detaching single display devices, as ChangeDisplaySettingsEx sees them.

/// The connector that the source would take if it were attached: a connected one of its adapter
/// that shows nothing, else one that is in a clone group of NVIDIA's driver only, else one that
/// another source shows besides others.
std::optional<size_t> ConnectorForSource(const Model& model, const std::vector<Path>& paths,
                                         size_t source);
/// The modes that a display device lists: those of its connectors, or of the one it would take.
std::vector<DisplayMode> ModesOfSource(const Model& model, size_t source);

// --- Plugging.

/// A known set of monitors gets its arrangement back from the database; otherwise the active paths
/// stay, and the connector is connected and dark.
void PlugMonitor(Model& model, size_t connector, const Monitor& monitor);
/// A known set gets its arrangement back; otherwise what still has a monitor stays, and when
/// nothing is left the panel, or the first connected display, is shown alone.
void UnplugMonitor(Model& model, size_t connector);

/// Gives every adapter its sources (\\.\DISPLAY1, ...), target ids and LUIDs where they are
/// missing.
void NumberDevices(Model& model);

/// The sizes of the desktops from left to right: "1024x768", "1366x768+1280x1024"; "" for none.
std::string DescribeSizes(const Model& model);

/// Windows' memory of these very paths with the monitors that are connected now, the latest one;
/// null when there is none.
const Arrangement* LastUse(const Model& model, const std::vector<Path>& paths);

/// The mode as a desktop that is turned by so many quarters takes it.
DisplayMode Turned(DisplayMode mode, uint32_t orientation);

}  // namespace sim
