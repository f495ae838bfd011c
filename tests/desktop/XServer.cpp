#include "tests/desktop/XServer.h"

#include "Common/Win.h"

#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace {

constexpr DWORD kPatience = 10000;  // milliseconds for an answer
constexpr DWORD kStep = 20;

std::string FolderOfThisProgram() {
  char path[MAX_PATH] = {};
  GetModuleFileNameA(nullptr, path, MAX_PATH);
  const std::string text(path);
  return text.substr(0, text.find_last_of('\\') + 1);
}

/// Has the script beside this program, which Wine starts as the Unix program that it is, answer one
/// question.
std::string AskX(const std::string& question) {
  const std::string folder = FolderOfThisProgram();
  const std::string answer = folder + "x-answer." + question;
  DeleteFileA(answer.c_str());
  std::string command = "\"" + folder + "x-answers\" " + question + " x-answer." + question;
  STARTUPINFOA startup = {};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION process = {};
  if (!CreateProcessA(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, folder.c_str(),
                      &startup, &process)) {
    throw std::runtime_error("x-answers cannot be started");
  }
  // Wine has no process handle for a Unix program: the file tells the end.
  for (DWORD waited = 0; waited < kPatience; waited += kStep) {
    if (GetFileAttributesA(answer.c_str()) != INVALID_FILE_ATTRIBUTES) {
      std::ifstream file(answer, std::ios::binary);
      return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }
    Sleep(kStep);
  }
  throw std::runtime_error("the X server does not answer the question for " + question);
}

}  // namespace

std::string OutputsThatAreOn() { return AskX("outputs"); }

Screenshot TakeScreenshot() {
  std::istringstream ppm(AskX("screenshot"));
  std::string magic;
  Screenshot shot;
  uint32_t highest = 0;
  ppm >> magic >> shot.width >> shot.height >> highest;
  ppm.get();
  if (magic != "P6" || highest != 255) throw std::runtime_error("the screenshot is no 8-bit PPM");
  shot.pixels.resize(static_cast<size_t>(shot.width) * shot.height);
  for (uint32_t& pixel : shot.pixels) {
    unsigned char rgb[3] = {};
    ppm.read(reinterpret_cast<char*>(rgb), 3);
    pixel = static_cast<uint32_t>(rgb[0]) << 16 | static_cast<uint32_t>(rgb[1]) << 8 | rgb[2];
  }
  if (!ppm) throw std::runtime_error("the screenshot is cut off");
  return shot;
}
