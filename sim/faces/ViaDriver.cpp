#include "sim/faces/ViaDriver.h"

#include <cstdio>
#include <cstring>

#include "sim/Failure.h"
#include "sim/Topology.h"
#include "sim/faces/AmdDriverRules.h"
#include "sim/faces/FaceHelp.h"

namespace sim {
namespace {

constexpr int kDriverEscape = 0x3000;
constexpr uint32_t kAskActive = 1;
constexpr uint32_t kSetDevices = 2;
constexpr uint32_t kAskConnected = 7;

// Windows' results of ExtEscape.
constexpr int kDone = 1;
constexpr int kNotImplemented = 0;
constexpr int kRefused = -1;

constexpr char kDc[] = "DC";  // the ledger's word
constexpr char kConnectedTold[] = "via driver: connected";
constexpr char kActiveTold[] = "via driver: active";

// What one call brought.
struct Escape {
  int code = 0;
  int input_size = 0;
  const char* input = nullptr;
  int output_size = 0;
  char* output = nullptr;

  uint32_t Word(size_t place) const {
    uint32_t word = 0;
    if (HasWord(place)) std::memcpy(&word, input + 4 * place, sizeof(word));
    return word;
  }
  bool HasWord(size_t place) const {
    return input != nullptr && input_size >= static_cast<int>(4 * place + 4);
  }
};

// The adapter whose driver answers.
std::optional<size_t> FindViaAdapter(const Model& model) {
  if (model.primary_source >= model.sources.size()) return std::nullopt;
  const size_t gpu = model.sources[model.primary_source].adapter;
  const Adapter& adapter = model.adapters[gpu];
  const bool via = adapter.hardware_id.find("VEN_1106") != std::string::npos;
  if (!via || !adapter.vendor_library || !AdapterWorks(adapter)) return std::nullopt;
  return gpu;
}

uint32_t BitOf(const Connector& connector) {
  constexpr uint32_t kTechnologyDvi = 4;
  if (IsInternal(connector.technology)) return 0x02;
  if (connector.technology == kTechnologyHd15) return 0x01;
  if (connector.technology <= kTechnologyComponent) return 0x04;
  return connector.technology == kTechnologyDvi ? 0x10 : 0;
}

// --- Questions.

template <typename Wanted>
uint32_t DevicesOf(const Model& model, size_t gpu, const char* told, Wanted wanted) {
  const auto& counters = Machine::Current().state().counters;
  const auto own = counters.find(told);
  if (own != counters.end()) return static_cast<uint32_t>(own->second);
  uint32_t devices = 0;
  for (const size_t connector : ConnectorsOfAdapter(model, gpu)) {
    if (wanted(connector)) devices |= BitOf(model.connectors[connector]);
  }
  return devices;
}

int TellConnected(const Model& model, size_t gpu, const Escape& escape) {
  const uint32_t devices =
      DevicesOf(model, gpu, kConnectedTold, [&](size_t c) { return IsConnected(model, c); });
  std::memcpy(escape.output, &devices, sizeof(devices));
  return kDone;
}

int TellActive(const Model& model, size_t gpu, const Escape& escape) {
  const uint32_t answer[] = {
      DevicesOf(model, gpu, kActiveTold,
                [&](size_t c) { return SourceOfConnector(model, c).has_value(); }),
      kViaOwnWord};
  std::memcpy(escape.output, answer, sizeof(answer));
  return kDone;
}

// --- The switch: one desktop on all that are named.

int Show(Model& model, size_t gpu, const Escape& escape) {
  uint32_t left = escape.Word(1);
  if (left == 0 || escape.Word(2) != 0) return kRefused;
  AmdDesktop desktop;
  for (const size_t connector : ConnectorsOfAdapter(model, gpu)) {
    const uint32_t bit = BitOf(model.connectors[connector]);
    if ((left & bit) == 0 || !IsConnected(model, connector)) continue;
    left &= ~bit;
    desktop.connectors.push_back(connector);
  }
  if (left != 0) return kRefused;
  return ShowAmdDesktops(model, gpu, {desktop}) == AmdOutcome::kDone ? kDone : kRefused;
}

// --- ExtEscape.

// What each request takes: bytes in, bytes out.
struct Request {
  uint32_t word;
  int input_size;
  int output_size;
};
constexpr Request kRequests[] = {{kAskConnected, 4, 4}, {kAskActive, 4, 8}, {kSetDevices, 12, 0}};

bool SizesFit(const Escape& escape) {
  for (const Request& request : kRequests) {
    if (!escape.HasWord(0) || request.word != escape.Word(0)) continue;
    const bool room = request.output_size == 0 || escape.output != nullptr;
    if (request.input_size == escape.input_size && request.output_size == escape.output_size &&
        room) {
      return true;
    }
  }
  ReportFailure(
      "the driver's escape was called with a request or with sizes that it does not take");
  return false;
}

int Answer(const Escape& escape) {
  Model& model = CurrentModel();
  const std::optional<size_t> gpu = FindViaAdapter(model);
  if (!gpu) return kNotImplemented;
  if (escape.code == QUERYESCSUPPORT) {
    const bool known = escape.HasWord(0) && escape.Word(0) == kDriverEscape;
    return known ? kDone : kNotImplemented;
  }
  if (escape.code != kDriverEscape) return kNotImplemented;
  if (!SizesFit(escape)) return kRefused;
  if (escape.Word(0) == kAskConnected) return TellConnected(model, *gpu, escape);
  if (escape.Word(0) == kAskActive) return TellActive(model, *gpu, escape);
  return Show(model, *gpu, escape);
}

std::string Describe(const Escape& escape) {
  char text[64];
  std::snprintf(text, sizeof(text), "0x%x in=", static_cast<unsigned>(escape.code));
  std::string words;
  for (size_t i = 0; escape.HasWord(i); ++i) {
    char word[16];
    std::snprintf(word, sizeof(word), "%s%x", i == 0 ? "" : ",", escape.Word(i));
    words += word;
  }
  return text + words + " (" + std::to_string(escape.input_size) +
         " bytes) out=" + std::to_string(escape.output_size) + " bytes";
}

int WINAPI FakeExtEscape(HDC dc, int code, int input_size, LPCSTR input, int output_size,
                         LPSTR output) {  // NOLINT(readability-non-const-parameter): imported so
  Call call("ExtEscape");
  const Escape escape = {code, input_size, input, output_size, output};
  if (!Machine::Current().state().ledger.Holds(kDc, reinterpret_cast<uint64_t>(dc))) {
    ReportFailure("ExtEscape was called on what is no device context");
    return kRefused;
  }
  const int result = call.Fails() ? static_cast<int>(FaultOr(call, static_cast<uint32_t>(kRefused)))
                                  : Answer(escape);
  const bool changes = code == kDriverEscape && escape.Word(0) == kSetDevices;
  const std::string text = Describe(escape);
  return static_cast<int>(changes ? call.Changed(result, "%s", text.c_str())
                                  : call.Read(result, "%s", text.c_str()));
}

}  // namespace

void SetViaDevices(Machine& machine, uint32_t connected, uint32_t active) {
  machine.state().counters[kConnectedTold] = connected;
  machine.state().counters[kActiveTold] = active;
}

const std::vector<Entry>& EscapeFace() {
  static const std::vector<Entry> entries = {
      {"gdi32.dll", "ExtEscape", Guard<FakeExtEscape>()},
  };
  return entries;
}

}  // namespace sim
