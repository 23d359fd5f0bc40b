// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_ENTRIES_WALK_H
#define ZELCONFUTILS_ENTRIES_WALK_H

#include <string_view>
#include <utility>

#include "config/memory/LinkedList.h"

/// The moves of every cursor that the file classes have: over the entries of a file, the entries of
/// a section, the sections. `afterDelete` is the delete mark: a delete has left a cursor on the
/// element after the deleted one, and the next forward step does not move.
namespace Configuration::Walk {

/// An unset cursor goes to the first position, which is end in an empty list.
template <class Element>
void Settle(LinkedList<Element>& list, LinkedListPosition<Element>& cursor) {
  if (cursor.IsUnset()) cursor = list.First();
}

template <class Element>
bool Forward(LinkedList<Element>& list, LinkedListPosition<Element>& cursor, bool& afterDelete) {
  const bool alreadyThere = std::exchange(afterDelete, false);
  if (cursor.IsUnset()) {
    cursor = list.First();
  } else if (cursor.IsAtElement() && !alreadyThere) {
    cursor.StepForward();
  }
  return cursor.IsAtElement();
}

template <class Element>
bool Back(LinkedList<Element>& list, LinkedListPosition<Element>& cursor, bool& afterDelete) {
  afterDelete = false;
  if (cursor.IsUnset() || cursor == list.First()) return false;
  cursor.StepBack();
  return true;
}

template <class Element>
bool ToFirst(LinkedList<Element>& list, LinkedListPosition<Element>& cursor, bool& afterDelete) {
  afterDelete = false;
  if (list.IsEmpty()) return false;
  cursor = list.First();
  return true;
}

template <class Element>
bool ToLast(LinkedList<Element>& list, LinkedListPosition<Element>& cursor, bool& afterDelete) {
  afterDelete = false;
  if (list.IsEmpty()) return false;
  cursor = list.Last();
  return true;
}

/// The first element of that name (the key of an entry), or end. Lengths are compared first, so
/// that most elements cost one comparison.
template <class Element>
LinkedListPosition<Element> Find(LinkedList<Element>& list, std::string_view name) {
  for (auto element = list.begin(); element != list.end(); ++element) {
    if ((*element).Name() == name) return list.PositionOf(element);
  }
  return list.End();
}

template <class Element>
bool To(LinkedList<Element>& list, LinkedListPosition<Element>& cursor, bool& afterDelete,
        std::string_view name) {
  afterDelete = false;
  const LinkedListPosition<Element> found = Find(list, name);
  if (found.IsEnd()) return false;
  cursor = found;
  return true;
}

}  // namespace Configuration::Walk

#endif
