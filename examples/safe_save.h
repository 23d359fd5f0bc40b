// SPDX-License-Identifier: MIT
// A crash-safe save, to be copied into a program (POSIX): see safe_save.cpp.
#ifndef ZELCONFUTILS_EXAMPLES_SAFE_SAVE_H
#define ZELCONFUTILS_EXAMPLES_SAFE_SAVE_H

#include <cstddef>
#include <string>

/// The image of a `ConfigFile` or `MultiSectionFile`: the bytes that `Save` would write. `room` is
/// the first size of the block, in bytes; it grows from there, which costs more than the copying.
template <class File>
std::string ImageOf(File& file, std::size_t room = 65536) {
  // The object does not tell the size, and the image may hold NUL bytes: its terminator is the
  // last NUL in a block that was filled with something else.
  std::string image(room, '\xFF');
  while (!file.SaveToBuffer(image.data(), image.size())) image.assign(image.size() * 2, '\xFF');
  image.resize(image.rfind('\0'));
  return image;
}

/// Puts `image` in the place of the file `path`: whatever happens, the file holds either all of
/// the old bytes or all of the new ones, and once the call has returned, the new ones are on the
/// disk. Mode and owner are kept, a symbolic link is followed; a new file is its owner's alone.
/// Throws `std::system_error`; nothing has changed then (but for a failure to flush the folder:
/// there the new bytes are in place, and a power cut may still bring back the old ones).
void SafeSave(const std::string& path, const std::string& image);

#endif
