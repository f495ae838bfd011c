// The content of an EDID file.
#include <fcntl.h>
#include <io.h>

#include <cstdio>
#include <memory>

#include "Common/Text.h"
#include "Common/Win.h"
#include "host/EdidInput.h"

namespace {

constexpr char kStandardInput[] = "-";
// 256 blocks as generous hexadecimal text are a quarter of it.
constexpr size_t kLargest = size_t{1024} * 1024;

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

std::string ReadAll(std::FILE* file) {
  std::string content;
  char buffer[4096];
  while (const size_t size = std::fread(buffer, 1, sizeof(buffer), file)) {
    content.append(buffer, size);
    if (content.size() > kLargest) throw UnreadableEdid("too large for an EDID");
  }
  if (std::ferror(file) != 0) throw UnreadableEdid("cannot be read");
  return content;
}

std::string ReadPath(const std::wstring& path) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) throw UnreadableEdid("no such file");
  if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) throw UnreadableEdid("is a directory");
  const std::unique_ptr<std::FILE, CloseFile> file(_wfopen(path.c_str(), L"rb"));
  if (file == nullptr) throw UnreadableEdid("cannot be opened");
  return ReadAll(file.get());
}

}  // namespace

std::vector<uint8_t> ReadEdidFile(const std::string& path) {
  if (path != kStandardInput) return EdidFromContent(ReadPath(WideFromNarrow(path)));
  _setmode(_fileno(stdin), _O_BINARY);
  return EdidFromContent(ReadAll(stdin));
}
