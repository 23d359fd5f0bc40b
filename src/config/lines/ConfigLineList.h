// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_LINES_CONFIG_LINE_LIST_H
#define ZELCONFUTILS_LINES_CONFIG_LINE_LIST_H

#include <cstddef>
#include <initializer_list>
#include <memory>
#include <string_view>
#include <unordered_set>

#include "config/memory/LinkedList.h"
#include "config/memory/TextPool.h"
#include "platform/Platform.h"

namespace Configuration {

/// Room after the text of a new line, so that most longer values need no new block.
constexpr std::size_t kNewLineSlack = 33;
/// Room after a text that has outgrown its block.
constexpr std::size_t kGrownLineSlack = 32;
/// The first save buffer, if the file fits it.
constexpr std::size_t kFirstSaveBufferBytes = 65536;
/// Room in the first save buffer of a larger file.
constexpr std::size_t kSaveBufferSlack = 1025;

/// One stored physical line, its line end included if it has one.
///
/// The text is a block of its own in the pool of the line's list: no edit of one line moves
/// another. A NUL byte is a byte like any other; one more stands after the text.
struct ConfigLine {
  char* text = nullptr;
  std::size_t length = 0;  ///< bytes before the terminator

  std::string_view View() const { return {text, length}; }

  /// The longest text that the block holds before its terminator.
  std::size_t Capacity() const { return TextPool::Capacity(text); }

  /// Replaces the text. `newText` must not lie in the line's own block.
  void Assign(TextPool& pool, std::string_view newText);

  /// Makes `length` larger by `n`. False when the text stayed where it is: the new bytes and
  /// their terminator are the caller's to write. True when it moved: every view into it is void.
  bool Grow(TextPool& pool, std::size_t n);
};

using ConfigLinePosition = LinkedListPosition<ConfigLine>;

/// The image of a whole file: every line in file order.
class ConfigLineList {
 public:
  ConfigLineList() = default;

  /// Takes over the save buffer of a list that this one is about to replace.
  void InheritSaveBuffer(ConfigLineList& former) noexcept;

  /// So many lines with so many bytes in all are going to be added, about: they take their memory
  /// in few pieces that fit.
  void Expect(std::size_t lineCount, std::size_t bytes);

  /// Adds a line with a copy of `text` after the last line or before the first.
  void AddLine(std::string_view text, bool atEnd);

  /// Inserts a line with a copy of `text` before `position`, which then names the new line. When
  /// memory runs out nothing has changed.
  void InsertLine(ConfigLinePosition& position, std::string_view text);

  /// Inserts lines with copies of `texts`, in order, before `position`: all, or none when memory
  /// runs out. The result is the position of the first.
  ConfigLinePosition InsertLines(ConfigLinePosition position,
                                 std::initializer_list<std::string_view> texts);

  /// Makes the line longer by `n`: the result is that of `ConfigLine::Grow`; false for `n` 0.
  bool GrowLine(ConfigLinePosition position, std::size_t n);

  /// Makes the line shorter by `n`, at most its length; the block stays. `terminate` writes the
  /// terminator, otherwise the caller writes over the bytes.
  void ShrinkLine(ConfigLinePosition position, std::size_t n, bool terminate);

  /// Releases the line; the result is the position of the line that stood after it.
  ConfigLinePosition EraseLine(ConfigLinePosition position) noexcept;

  /// Releases all lines. The save buffer stays.
  void Clear() noexcept;

  /// Writes all lines to `file`: in blocks as they come, or gathered in the save buffer and
  /// written with one call. False when the system does not take every byte or there is no save
  /// buffer to be had.
  bool WriteAll(const zelconfutils::Platform::File& file, bool coalesced);

  /// Two records refer to a shared line, a section that takes its name from it and another: no
  /// edit may rewrite or erase it. Lines stay shared until `Clear`.
  void MarkShared(ConfigLinePosition position) { shared_.insert(&*position); }
  bool IsShared(ConfigLinePosition position) const {
    return !shared_.empty() && shared_.count(&*position) != 0;
  }

  ConfigLinePosition First() { return lines_.First(); }
  ConfigLinePosition End() { return lines_.End(); }
  LinkedList<ConfigLine>& Lines() { return lines_; }
  const LinkedList<ConfigLine>& Lines() const { return lines_; }

  std::size_t totalLength = 0;   ///< the sum of all lengths: the exact size of the file image
  std::size_t saveCapacity = 0;  ///< bytes of `saveBuffer`
  std::size_t saveGrowth = 1;    ///< doubles with each growth of `saveBuffer`
  std::unique_ptr<char[]> saveBuffer;

 private:
  bool WriteInBlocks(const zelconfutils::Platform::File& file) const;
  bool WriteAtOnce(const zelconfutils::Platform::File& file);
  bool ProvideSaveBuffer();

  LinkedList<ConfigLine> lines_;
  TextPool texts_;
  std::unordered_set<const ConfigLine*> shared_;
};

}  // namespace Configuration

#endif
