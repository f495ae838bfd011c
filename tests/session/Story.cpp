#include "tests/session/Story.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>

#include "sim/ShortForm.h"
#include "sim/Topology.h"
#include "sim/faces/ChangeSettings.h"
#include "tests/support/SessionBench.h"

namespace {

std::string MachineFile(const std::string& name) {
  const std::string file = __FILE__;
  return file.substr(0, file.rfind("tests/session/")) + "machines/" + name + ".toml";
}

}  // namespace

void Story::TearDown() {
  EndProcess();
  machine.reset();
}

void Story::Take(std::unique_ptr<sim::Machine> taken) {
  machine = std::move(taken);
  machine->UsePictures(BuiltPictureFolder());
  machine->Config("Settings", "Prefer Windows 7 CCD API", 1);
}

void Story::On(const std::string& text) { Take(std::make_unique<sim::Machine>(text)); }
void Story::OnFile(const std::string& notebook) {
  Take(sim::Machine::FromFile(MachineFile(notebook)));
}
void Story::ThroughTheVendor() { machine->Config("Settings", "Prefer Windows 7 CCD API", 0); }

void Story::Plug(const char* connector, const char* name, uint32_t width, uint32_t height) {
  machine->Plug(connector, sim::MakeMonitor(name, width, height));
}

void Story::WindowsForgets() {
  sim::Model& model = machine->model();
  model.database.clear();
  model.remembered.clear();
  for (sim::Source& source : model.sources) source.registry.reset();
}

void Story::UserSets(const char* connector, uint32_t width, uint32_t height) {
  sim::Model& model = machine->model();
  sim::SettingsRequest request;
  request.fields = DM_PELSWIDTH | DM_PELSHEIGHT;
  request.mode.width = width;
  request.mode.height = height;
  const std::optional<size_t> source =
      sim::SourceOfConnector(model, *sim::FindConnector(model, connector));
  ASSERT_TRUE(source.has_value()) << connector;
  ASSERT_EQ(sim::ChangeSettings(model, source, &request, CDS_UPDATEREGISTRY),
            DISP_CHANGE_SUCCESSFUL);
}

void Story::StartProcess() {
  ostrel.emplace(*machine);
  ASSERT_TRUE(ostrel->Init());
  ASSERT_TRUE(ostrel->RegisterNotification(SessionBench::Receiver(), SessionBench::kMessage));
  machine->TakeJournal();
  notifications_seen_ = machine->Notifications().size();
}

void Story::EndProcess() {
  if (!ostrel) return;
  ostrel->DeInit();
  ostrel.reset();
}

Pictures Story::Look() {
  EXPECT_TRUE(ostrel->Run());
  const Pictures offered = Offered();
  machine->Advance(3000);
  EXPECT_EQ(TakeNotifications(), "12");
  return offered;
}

void Story::Choose(const std::string& picture) {
  ASSERT_TRUE(ostrel->Run());
  const Pictures offered = Offered();
  for (size_t presses = 0; presses <= offered.size() && Highlighted() != picture; ++presses) {
    ASSERT_TRUE(ostrel->Run());
  }
  ASSERT_EQ(Highlighted(), picture);
  machine->Advance(1500);
  ASSERT_EQ(machine->Popup(), nullptr);
  EXPECT_EQ(TakeNotifications(), "12");
}

Pictures Story::Offered() const {
  Pictures files;
  for (const sim::Drawn& drawn : machine->PopupDrawing()) {
    if (drawn.file == "selected.png") break;
    if (drawn.file.compare(0, 3, "bg_") != 0) files.push_back(drawn.file);
  }
  return files;
}

std::string Story::Highlighted() const {
  const std::vector<sim::Drawn>& drawing = machine->PopupDrawing();
  const auto frame = std::find_if(drawing.begin(), drawing.end(), [](const sim::Drawn& drawn) {
    return drawn.file == "selected.png";
  });
  if (frame == drawing.end() || std::next(frame) == drawing.end()) return "";
  return std::next(frame)->file;
}

std::string Story::TakeNotifications() {
  std::string codes;
  const std::vector<sim::Notification>& all = machine->Notifications();
  for (; notifications_seen_ < all.size(); ++notifications_seen_) {
    const sim::Notification& one = all[notifications_seen_];
    const bool ours =
        one.receiver == SessionBench::Receiver() && one.message == SessionBench::kMessage;
    codes += ours ? std::to_string(one.wparam) : "?";
  }
  return codes;
}

std::string Story::Desktops() const {
  const sim::Model& model = machine->model();
  std::vector<size_t> sources;
  for (size_t i = 0; i < model.sources.size(); ++i) {
    if (sim::IsAttached(model, i)) sources.push_back(i);
  }
  std::stable_sort(sources.begin(), sources.end(), [&model](size_t a, size_t b) {
    return model.sources[a].x < model.sources[b].x;
  });
  std::ostringstream out;
  for (const size_t index : sources) {
    const sim::Source& source = model.sources[index];
    const char* separator = out.tellp() > 0 ? "; " : "";
    for (const size_t connector : sim::ConnectorsOfSource(model, index)) {
      out << separator << model.connectors[connector].id;
      separator = "+";
    }
    out << " " << source.mode.width << "x" << source.mode.height << "x" << source.mode.bits << "@"
        << source.mode.frequency << " at " << source.x << "," << source.y;
  }
  return out.str();
}

std::string Story::TakeLines(const std::vector<std::string>& beginnings) {
  return TakeLinesThat([&](const std::string& line) {
    return std::any_of(beginnings.begin(), beginnings.end(),
                       [&](const std::string& start) { return line.rfind(start, 0) == 0; });
  });
}

std::string Story::TakeLinesBut(const std::string& beginning) {
  return TakeLinesThat([&](const std::string& line) { return line.rfind(beginning, 0) != 0; });
}

std::string Story::TakeLinesThat(const std::function<bool(const std::string&)>& wanted) {
  std::istringstream lines(machine->TakeJournal());
  std::string kept;
  for (std::string line; std::getline(lines, line);) {
    if (wanted(line)) kept += line + "\n";
  }
  return kept;
}

std::string Story::Remembered() const {
  const std::wstring path = machine->TempFolder() + L"\\Ostrel.ini";
  // Windows keeps profile files in a cache; this writes it out.
  WritePrivateProfileStringW(nullptr, nullptr, nullptr, path.c_str());
  std::ifstream in(std::string(path.begin(), path.end()), std::ios::binary);
  std::string text;
  for (std::string line; std::getline(in, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (!line.empty()) text += line + "\n";
  }
  return text;
}
