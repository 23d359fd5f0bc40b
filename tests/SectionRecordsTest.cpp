// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <type_traits>

#include "FailingNew.h"
#include "RecordTexts.h"

namespace {

using E = ZelSectionEntry;
using S = ZelSection;
using RecordTexts::Entry;
using RecordTexts::Section;
using RecordTexts::Text;

const std::string kLong(600, 'a');
const std::string k511 = kLong.substr(0, 511);
E x = Entry("x");

S::EntryPosition At(S& section, int index) { return section.GetEntryList()->begin() + index; }

std::string ResultText(S&, bool result) { return result ? "true" : "false"; }
std::string ResultText(S& section, S::ConstEntryPosition result) {
  return result == section.EndEntry() ? "end" : std::to_string(result - At(section, 0));
}

// A call on an object made of a text; where an allocation fails, the object is as before.
template <class Object, class Result>
struct Row {
  const char *rule, *before;
  Result (*call)(Object&);
  std::string after, result = {};
};
template <class Object, class Result, std::size_t kRows>
void RunAll(const Row<Object, Result> (&rows)[kRows], Object (*make)(const std::string&)) {
  for (const auto& row : rows) {
    SCOPED_TRACE(row.rule);
    const long blocks = FailingNew::LiveBlocks();
    std::optional<Object> object(make(row.before));
    std::string result;
    const auto call = [&] {
      if constexpr (std::is_void_v<Result>) {
        row.call(*object);
      } else {
        result = ResultText(*object, row.call(*object));
      }
    };
    FailingNew::ForEachAllocation(call, [&](bool failed) {
      EXPECT_EQ(Text(*object), failed ? row.before : row.after);
      EXPECT_EQ(result, failed ? "" : row.result);
      object.emplace(make(row.before));
    });
    object.reset();
    const bool leaks = FailingNew::LiveBlocks() != blocks;
    EXPECT_FALSE(leaks && !testing::Test::HasFailure());  // a failure holds memory, too
  }
}

TEST(SectionEntry, CallsOnAnEntry) {
  static const Row<E, void> rows[] = {
      {"a key is set", "~/v", [](E& e) { e.SetKeyName("k"); }, "k/v"},
      {"a value is set", "k", [](E& e) { e.SetValue("v"); }, "k/v"},
      {"a comment is set", "k", [](E& e) { e.SetComment("c"); }, "k/~/c"},
      {"null changes nothing", "k/v/c", [](E& e) { e.SetValue(nullptr); }, "k/v/c"},
      {"an empty text is not null", "k/v", [](E& e) { e.SetValue(""); }, "k/"},
      {"511 bytes are whole", "k", [](E& e) { e.SetValue(k511.c_str()); }, "k/" + k511},
      {"a longer text loses its end", "k", [](E& e) { e.SetValue(kLong.c_str()); }, "k/" + k511},
      {"a shorter one leaves no remains", "k/long", [](E& e) { e.SetValue("s"); }, "k/s"},
      {"its own text shifts", "k/value", [](E& e) { e.SetValue(e.GetValue() + 2); }, "k/lue"},
      {"UndoComment makes it null", "k/v/c", [](E& e) { e.UndoComment(); }, "k/v"},
      {"UndoComment of null", "k/v", [](E& e) { e.UndoComment(); }, "k/v"},
      {"assigned texts replace", "a/b/c", [](E& e) { e = Entry("k/v/d"); }, "k/v/d"},
      {"assigned nulls do not", "k/v/c", [](E& e) { e = Entry("~/w"); }, "k/w/c"},
      {"a copy has all texts", "~", [](E& e) { e = E(Entry("k/v/c")); }, "k/v/c"},
  };
  RunAll(rows, Entry);
}

TEST(Section, CallsOnASection) {
  static const Row<S, void> rows[] = {
      {"a name is set", "~: k", [](S& s) { s.SetName("n"); }, "n: k"},
      {"null is no name", "n:", [](S& s) { s.SetName(nullptr); }, "n:"},
      {"its own name is wiped first", "n: k", [](S& s) { s.SetName(s.GetName()); }, ": k"},
      {"ClearEntryList keeps the name", "n: a b", [](S& s) { s.ClearEntryList(); }, "n:"},
      {"assigned entries are appended", "n: a", [](S& s) { s = Section("m: b/c"); }, "m: a b/c"},
      {"a missing name leaves the old one", "n:", [](S& s) { s = Section("~: b"); }, "n: b"},
      {"a blank section takes all", "~:", [](S& s) { s = Section("m: b c"); }, "m: b c"},
      {"a copy has name and entries", "~:", [](S& s) { s = S(Section("m: b")); }, "m: b"},
  };
  RunAll(rows, Section);
}

TEST(Section, AddEntryAppendsACopy) {
  static const Row<S, bool> rows[] = {
      {"texts", "n: k", [](S& s) { return s.AddEntry("x", nullptr, "z"); }, "n: k x/~/z", "true"},
      {"an entry", "n: k", [](S& s) { return s.AddEntry(&x); }, "n: k x", "true"},
      {"entries repeat", "n: k", [](S& s) { return s.AddEntry(*At(s, 0)); }, "n: k k", "true"},
      {"not null", "n: k", [](S& s) { return s.AddEntry(nullptr); }, "n: k", "false"},
  };
  RunAll(rows, Section);
}

TEST(Section, CallsWithPositions) {
  static const Row<S, S::EntryPosition> rows[] = {
      {"insert appends, and gives the end", "n: k", [](S& s) { return s.InsertEntry(&x); },
       "n: k x", "end"},
      {"insert before the first", "n: a", [](S& s) { return s.InsertEntry(&x, At(s, 0)); },
       "n: x a", "0"},
      {"insert before another", "n: a b", [](S& s) { return s.InsertEntry(&x, At(s, 1)); },
       "n: a x b", "1"},
      {"insert at the end", "n: a", [](S& s) { return s.InsertEntry(&x, s.EndEntry()); }, "n: a x",
       "1"},
      {"insert no null", "n: a", [](S& s) { return s.InsertEntry(nullptr, At(s, 0)); }, "n: a",
       "end"},
      {"remove gives the next", "n: a b c", [](S& s) { return s.RemoveEntry(At(s, 1)); }, "n: a c",
       "1"},
      {"remove the last", "n: a b", [](S& s) { return s.RemoveEntry(At(s, 1)); }, "n: a", "end"},
      {"remove at the end", "n: a", [](S& s) { return s.RemoveEntry(s.EndEntry()); }, "n: a",
       "end"},
      {"remove the first equal", "n: a X x", [](S& s) { return s.RemoveEntry(&x); }, "n: a x", "1"},
      {"remove a stored one", "n: k a k", [](S& s) { return s.RemoveEntry(*At(s, 2)); }, "n: a k",
       "0"},
      {"remove without an equal", "n: x/y", [](S& s) { return s.RemoveEntry(&x); }, "n: x/y",
       "end"},
      {"find the first", "n: a X x", [](S& s) { return s.FindEntry(&x); }, "n: a X x", "1"},
      {"find none", "n:", [](S& s) { return s.FindEntry(&x); }, "n:", "end"},
      {"find no null", "n: a", [](S& s) { return s.FindEntry(nullptr); }, "n: a", "end"},
  };
  RunAll(rows, Section);
}

TEST(Section, NullSlotsOfTheArrayAreSkipped) {
  S section = Section("n: a x"), other = Section("n: a x"), target;
  section.GetEntryList()->insert(At(section, 1), nullptr);
  other.GetEntryList()->push_back(nullptr);
  EXPECT_EQ(ResultText(section, section.FindEntry(&x)), "2");
  EXPECT_TRUE(section == section);
  EXPECT_FALSE(section == other) << "slots are compared pair by pair";
  target = section;
  EXPECT_EQ(Text(target), "n: a x");
  section.RemoveEntry(At(section, 1));
  EXPECT_EQ(Text(section), "n: a x");
}

struct Pair {
  const char *left, *right;
  bool equal;
};

TEST(SectionEntry, IsEqualWithCaseIgnoredButNullIsNotEmpty) {
  for (const auto& [left, right, equal] : {
           Pair{"k/v/c", "K/V/C", true},
           {"k/v/c", "l/v/c", false},
           {"k/v/c", "k/w/c", false},
           {"k/v/c", "k/v/d", false},
           {"k/v/", "k/v", false},
           {"k/v", "k/v/", false},
           {"~", "~", true},
           {"~/w", "/w", false},
           {"azAZ", "AZaz", true},
           {"[", "{", false},
           {"@", "`", false},
           {"k\xC4", "k\xE4", false},
       }) {
    EXPECT_EQ(Entry(left) == Entry(right), equal) << left << " and " << right;
  }
}

TEST(Section, IsEqualWithANamePairByPair) {
  for (const auto& [left, right, equal] : {
           Pair{"n: a b", "N: A B", true},
           {"n: a", "m: a", false},
           {"n: a b", "n: b a", false},
           {"n: a", "n: a a", false},
           {"n: a a", "n: a", false},
           {"~: a", "~: a", false},
           {"~:", ":", false},
           {":", "~:", false},
           {":", ":", true},
       }) {
    EXPECT_EQ(Section(left) == Section(right), equal) << left << " and " << right;
  }
}

TEST(Section, BlocksAreMadeOnceAndNothingForAnAssignmentToItself) {
  E entry = Entry("k/v/c");
  S section = Section("n: a b");
  const char* const value = entry.GetValue();
  const auto change = [&] {
    entry.SetValue(k511.c_str());
    entry = *&entry;
    section = *&section;
  };
  EXPECT_EQ(FailingNew::ForEachAllocation(change, [](bool) {}), 0);
  EXPECT_EQ(entry.GetValue(), value) << "the block stays the same";
  EXPECT_EQ(Text(section), "n: a b");
}

}  // namespace
