// SPDX-License-Identifier: MIT
// The bytes of a text file, read whole or not at all. To be copied into a program, with
// safe_save.h, which needs it.
#ifndef ZELCONFUTILS_EXAMPLES_TEXT_FILE_H
#define ZELCONFUTILS_EXAMPLES_TEXT_FILE_H

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <system_error>

/// Thrown for an edit or a save that would do harm. Nothing has changed.
struct Refused : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// The bytes of the file, no line end converted. Throws `std::system_error`, also when reading
/// fails midway: half a file is never taken for a whole one.
inline std::string ReadBytes(const std::string& path) {
  const auto fail = [&path] { throw std::system_error(errno, std::generic_category(), path); };
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"),
                                                             std::fclose);
  if (!file) fail();
  std::string bytes;
  char block[65536];
  while (const std::size_t n = std::fread(block, 1, sizeof block, file.get()))
    bytes.append(block, n);
  if (std::ferror(file.get()) != 0) fail();
  return bytes;
}

/// The image of a `ConfigFile` or `MultiSectionFile` as it stands in memory. `room` is the first
/// size of the block, in bytes; it grows from there, which costs more than the copying.
template <class File>
std::string TextOf(File& file, std::size_t room = 65536) {
  // The object does not tell the size, and the image may hold NUL bytes: its terminator is the
  // last NUL in a block that was filled with something else.
  std::string text(room, '\xFF');
  while (!file.SaveToBuffer(text.data(), text.size())) text.assign(text.size() * 2, '\xFF');
  text.resize(text.rfind('\0'));
  return text;
}

/// The bytes that `Save` would write.
template <class File>
std::string ImageOf(File& file, std::size_t room = 65536) {
  std::string image = TextOf(file, room);
#ifdef _WIN32  // Save writes through the system's text mode
  for (std::size_t at = 0; (at = image.find('\n', at)) != std::string::npos; at += 2)
    image.replace(at, 1, "\r\n");
#endif
  return image;
}

/// Throws `Refused` unless the file holds exactly `bytes`. Right after an object was loaded, with
/// its image: a read that failed midway ends a load without an error, and on Windows the text mode
/// changes single LFs and drops what follows a byte 0x1A; a save would destroy the rest of such a
/// file. Right before a save, with what was read: another program may have changed the file.
inline void RequireHolds(const std::string& path, const std::string& bytes) {
  const std::string now = ReadBytes(path);
  if (now != bytes) {
    throw Refused(path + ": not replaced: it has " + std::to_string(now.size()) +
                  " bytes, and they are not the " + std::to_string(bytes.size()) +
                  " bytes that were read");
  }
}

/// How the lines of `text` end: as its first one does, or as the system's text files do.
inline std::string LineEnd(const std::string& text) {
#ifdef _WIN32
  const char* usual = "\r\n";
#else
  const char* usual = "\n";
#endif
  const std::size_t end = text.find('\n');
  if (end == std::string::npos) return usual;
  return end > 0 && text[end - 1] == '\r' ? "\r\n" : "\n";
}

/// Whether what is appended to `text` begins a line of its own.
inline bool EndsItsLastLine(const std::string& text) { return text.empty() || text.back() == '\n'; }

#endif
