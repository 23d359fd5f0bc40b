// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <optional>
#include <string>

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
E x = Entry("x"), z = Entry("z");

S::EntryPosition At(S& section, int index) { return section.GetEntryList()->begin() + index; }

// The entries with a mark at the position: `a >b `, or `a b >` for the end.
std::string Dump(const S& section, S::ConstEntryPosition position) {
  std::string text;
  for (auto at = section.GetEntryList()->begin();; ++at) {
    if (at == position) text += '>';
    if (at == section.EndEntry()) return text;
    text += Text(**at) + ' ';
  }
}

// A call on an object made of a text; where an allocation fails, the object is as before.
template <class Object>
struct Row {
  const char *rule, *before;
  void (*call)(Object&);
  std::string after;
};
template <class Object, std::size_t kRows>
void RunAll(const Row<Object> (&rows)[kRows], Object (*make)(const std::string&)) {
  for (const auto& row : rows) {
    SCOPED_TRACE(row.rule);
    const long blocks = FailingNew::LiveBlocks();
    std::optional<Object> object(make(row.before));
    FailingNew::ForEachAllocation([&] { row.call(*object); },
                                  [&](bool failed) {
                                    EXPECT_EQ(Text(*object), failed ? row.before : row.after);
                                    object.emplace(make(row.before));
                                  });
    object.reset();
    const bool leaks = FailingNew::LiveBlocks() != blocks;
    EXPECT_FALSE(leaks && !testing::Test::HasFailure());  // a failure holds memory, too
  }
}

TEST(SectionEntry, CallsOnAnEntry) {
  static const Row<E> rows[] = {
      {"a key is set", "~/v", [](E& e) { e.SetKeyName("k"); }, "k/v"},
      {"a comment is set", "k", [](E& e) { e.SetComment("c"); }, "k/~/c"},
      {"null changes nothing", "k/v/c", [](E& e) { e.SetValue(nullptr); }, "k/v/c"},
      {"an empty text is not null", "k/v", [](E& e) { e.SetValue(""); }, "k/"},
      {"511 bytes are whole", "k", [](E& e) { e.SetValue(k511.c_str()); }, "k/" + k511},
      {"a longer text loses its end", "k", [](E& e) { e.SetValue(kLong.c_str()); }, "k/" + k511},
      {"a shorter one leaves no remains", "k/long", [](E& e) { e.SetValue("s"); }, "k/s"},
      {"its own text shifts", "k/value", [](E& e) { e.SetValue(e.GetValue() + 2); }, "k/lue"},
      {"UndoComment makes it null", "k/v/c", [](E& e) { e.UndoComment(); }, "k/v"},
      {"assigned texts replace", "a/b/c", [](E& e) { e = Entry("k/v/d"); }, "k/v/d"},
      {"assigned nulls do not", "k/v/c", [](E& e) { e = Entry("~/w"); }, "k/w/c"},
      {"an assignment to itself", "k/v/c", [](E& e) { e = *&e; }, "k/v/c"},
      {"a copy has all texts", "~", [](E& e) { e = E(Entry("k/v/c")); }, "k/v/c"},
  };
  RunAll(rows, Entry);
}

TEST(Section, CallsOnASection) {
  static const Row<S> rows[] = {
      {"a name is set", "~: k", [](S& s) { s.SetName("n"); }, "n: k"},
      {"null is no name", "n:", [](S& s) { s.SetName(nullptr); }, "n:"},
      {"its own name is wiped first", "n: k", [](S& s) { s.SetName(s.GetName()); }, ": k"},
      {"ClearEntryList keeps the name", "n: a b", [](S& s) { s.ClearEntryList(); }, "n:"},
      {"texts are added", "n: k", [](S& s) { s.AddEntry("x", nullptr, "z"); }, "n: k x/~/z"},
      {"entries may repeat", "n: k", [](S& s) { s.AddEntry(*At(s, 0)); }, "n: k k"},
      {"inserted before the first", "n: a", [](S& s) { s.InsertEntry(&x, At(s, 0)); }, "n: x a"},
      {"removed as stored", "n: k a k", [](S& s) { s.RemoveEntry(*At(s, 2)); }, "n: a k"},
      {"assigned entries are appended", "n: a", [](S& s) { s = Section("m: b/c"); }, "m: a b/c"},
      {"a missing name leaves the old one", "n:", [](S& s) { s = Section("~: b"); }, "n: b"},
      {"an assignment to itself", "n: a b", [](S& s) { s = *&s; }, "n: a b"},
      {"a blank section takes all", "~:", [](S& s) { s = Section("m: b c"); }, "m: b c"},
  };
  RunAll(rows, Section);
}

TEST(Section, AddEntrySaysWhetherItAdds) {
  S s = Section("n:");
  EXPECT_TRUE(s.AddEntry("k", "v", "c"));
  EXPECT_TRUE(s.AddEntry(&x));
  EXPECT_FALSE(s.AddEntry(nullptr));
  EXPECT_EQ(Text(s), "n: k/v/c x");
}

TEST(Section, OtherCallsOnEntriesGiveAPosition) {
  S s = Section("n: a b X");
  EXPECT_EQ(Dump(s, s.InsertEntry(&x)), "a b X x >") << "the end, not what is appended";
  EXPECT_EQ(Dump(s, s.InsertEntry(&z, At(s, 1))), "a >z b X x ");
  EXPECT_EQ(Dump(s, s.InsertEntry(&z, s.EndEntry())), "a z b X x >z ");
  EXPECT_EQ(Dump(s, s.InsertEntry(nullptr, At(s, 0))), "a z b X x z >");
  EXPECT_EQ(Dump(s, s.FindEntry(&x)), "a z b >X x z ") << "the first that is equal";
  EXPECT_EQ(Dump(s, s.FindEntry(nullptr)), "a z b X x z >");
  EXPECT_EQ(Dump(s, s.RemoveEntry(&x)), "a z b >x z ");
  EXPECT_EQ(Dump(s, s.RemoveEntry(At(s, 1))), "a >b x z ");
  EXPECT_EQ(Dump(s, s.RemoveEntry(At(s, 3))), "a b x >");
  EXPECT_EQ(Dump(s, s.RemoveEntry(&z)), "a b x >") << "there is no equal one";
  S blank;
  EXPECT_EQ(Dump(blank, blank.RemoveEntry(blank.EndEntry())), ">");
}

TEST(Section, NullSlotsOfTheArrayAreSkipped) {
  S section = Section("n: a x"), other = Section("n: a x"), target;
  section.GetEntryList()->insert(At(section, 1), nullptr);
  other.GetEntryList()->push_back(nullptr);
  EXPECT_EQ(section.FindEntry(&x), At(section, 2));
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
           {"~", "~", true},
           {"azAZ@[", "AZaz@[", true},
           {"@[", "`{", false},
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
           {":", ":", true},
       }) {
    EXPECT_EQ(Section(left) == Section(right), equal) << left << " and " << right;
  }
}

TEST(SectionEntry, ATextKeepsItsBlock) {
  E entry = Entry("k/v");
  const char* const value = entry.GetValue();
  const E other = Entry("k/w");
  const auto change = [&] {
    entry.SetValue(k511.c_str());
    entry = other;
  };
  EXPECT_EQ(FailingNew::ForEachAllocation(change, [](bool) {}), 0);
  EXPECT_EQ(entry.GetValue(), value);
}

}  // namespace
