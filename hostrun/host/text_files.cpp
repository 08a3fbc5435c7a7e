// hostrun/host/text_files.cpp - the host's "TextFile", and lines from standard input.
#include "hostrun/host/text_files.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

#include "hostrun/host/exceptions.h"
#include "hostrun/host/folder_items.h"
#include "hostrun/host/output.h"
#include "hostrun/host/records.h"
#include "hostrun/host/registry.h"
#include "hostrun/host/standard_input.h"

namespace hostrun {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

struct OpenFile {
  std::unique_ptr<std::FILE, CloseFile> file;  // null: closed, or never opened
  std::string path;
  bool reading = false;
  bool atStart = true;
};

OpenFile& FileOf(Object* self) {
  return PayloadOf<OpenFile>(self);
}

[[noreturn]] void Refuse(const char* what, const std::string& path, const std::string& why) {
  RaiseHostException("IOException", std::string("Can't ") + what + " " + path + ": " + why + ".");
}

std::FILE* WantOpen(Object* self, bool forReading) {
  OpenFile& open = FileOf(self);
  if (!open.file) {
    RaiseHostException("IOException", open.path.empty()
                                          ? "No file is open: wanted TextFile.Open, Create or Append."
                                          : open.path + " is closed.");
  }
  if (open.reading != forReading) {
    Refuse(forReading ? "read" : "write", open.path,
           open.reading ? "it is open for reading" : "it is open for writing");
  }
  return open.file.get();
}

// What is written goes to the system at once, so that no failure shows up too late to be told.
Object* NewTextFile(const std::string& path, const char* mode) {
  ObjectRef made = ObjectRef::Adopt(NewObject(TheRegistry().ClassNamed("TextFile")));
  OpenFile& open = FileOf(made.get());
  open.path = path;
  open.reading = *mode == 'r';
  open.file.reset(std::fopen(path.c_str(), mode));
  if (!open.file) Refuse(*mode == 'w' ? "create" : "open", path, std::strerror(errno));
  if (!open.reading) std::setvbuf(open.file.get(), nullptr, _IONBF, 0);
  return made.Detach();
}

constexpr char kRead[] = "re";
constexpr char kCreate[] = "we";
constexpr char kAppend[] = "ae";

template <const char* Mode>
Object* OpenItem(Object* item) {
  return NewTextFile(FolderItemPath(item), Mode);
}
template <const char* Mode>
Object* OpenPath(HostString* path) {
  const ObjectRef item = ObjectRef::Adopt(NewFolderItem(Utf8Of(path)));
  return OpenItem<Mode>(item.get());
}

void CheckRead(Object* self) {
  if (std::ferror(FileOf(self).file.get()) != 0) Refuse("read", FileOf(self).path, std::strerror(errno));
}

// A byte order mark is no text.
HostString* AsText(Object* self, std::string bytes) {
  if (std::exchange(FileOf(self).atStart, false) && bytes.starts_with(kByteOrderMark)) {
    bytes.erase(0, kByteOrderMark.size());
  }
  return NewString(bytes);
}

// Ends with LF, CR or both.
HostString* ReadLine(Object* self) {
  std::FILE* const file = WantOpen(self, true);
  std::string line;
  int c = std::getc(file);
  for (; c != EOF && c != '\n' && c != '\r'; c = std::getc(file)) line += static_cast<char>(c);
  CheckRead(self);
  if (c == '\r') {
    const int next = std::getc(file);
    if (next != '\n' && next != EOF) std::ungetc(next, file);
  }
  return AsText(self, std::move(line));
}

HostString* ReadAll(Object* self) {
  std::FILE* const file = WantOpen(self, true);
  std::string text;
  std::array<char, 65536> part{};
  for (std::size_t count = 1; count > 0;) {
    count = std::fread(part.data(), 1, part.size(), file);
    text.append(part.data(), count);
  }
  CheckRead(self);
  return AsText(self, std::move(text));
}

bool EndOfFile(Object* self, std::int32_t) {
  std::FILE* const file = WantOpen(self, true);
  const int next = std::getc(file);
  CheckRead(self);
  if (next == EOF) return true;
  std::ungetc(next, file);
  return false;
}

void WriteBytes(Object* self, const std::string& bytes) {
  std::FILE* const file = WantOpen(self, false);
  if (std::fwrite(bytes.data(), 1, bytes.size(), file) != bytes.size()) {
    Refuse("write", FileOf(self).path, std::strerror(errno));
  }
}
void Write(Object* self, HostString* text) {
  WriteBytes(self, Utf8Of(text));
}
void WriteLine(Object* self, HostString* text) {
  WriteBytes(self, Utf8Of(text) + "\n");
}

void Close(Object* self) {
  OpenFile& open = FileOf(self);
  if (open.file && std::fclose(open.file.release()) != 0) Refuse("close", open.path, std::strerror(errno));
}

HostString* Path(Object* self, std::int32_t) {
  return NewString(FileOf(self).path);
}

// The next line of standard input without its end; empty at the end of the input.
HostString* Input(HostString* prompt) {
  WriteOutput(Utf8Of(prompt));
  FlushOutput();
  return NewString(ReadInputLine().value_or(""));
}

std::array properties = {
    ReadOnly("EndOfFile", "boolean", &EndOfFile),
    ReadOnly("Path", "string", &Path),
};

std::array methods = {
    MethodRecord("ReadLine as string", &ReadLine),
    MethodRecord("ReadAll as string", &ReadAll),
    MethodRecord("Write(text as string)", &Write),
    MethodRecord("WriteLine(text as string = \"\")", &WriteLine),
    MethodRecord("Close", &Close),
};

std::array sharedMethods = {
    MethodRecord("Open(file as FolderItem) as TextFile", &OpenItem<kRead>),
    MethodRecord("Open(path as string) as TextFile", &OpenPath<kRead>),
    MethodRecord("Create(file as FolderItem) as TextFile", &OpenItem<kCreate>),
    MethodRecord("Create(path as string) as TextFile", &OpenPath<kCreate>),
    MethodRecord("Append(file as FolderItem) as TextFile", &OpenItem<kAppend>),
    MethodRecord("Append(path as string) as TextFile", &OpenPath<kAppend>),
};

}  // namespace

void RegisterTextFileClass() {
  static constinit qvx::REALclassDefinition record = ClassRecord("TextFile");
  SetMembers(record, methods, properties);
  SetSharedMethods(record, sharedMethods);
  TheRegistry().Register(record, Origin::Host, PayloadFor<OpenFile>());
  TheRegistry().AddFunction("Input(prompt as string = \"\") as string", Proc(&Input));
  TheRegistry().AddFunction("EndOfInput as boolean", Proc(&AtEndOfInput));
}

}  // namespace hostrun
