// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_MULTISECTION_SECTION_LOAD_H
#define ZELCONFUTILS_MULTISECTION_SECTION_LOAD_H

#include "config/entries/ConfigEntry.h"
#include "config/lines/ConfigLineList.h"
#include "multisection/ConfigSection.h"
#include "multisection/SectionSyntax.h"

namespace Configuration {

/// Builds the index of `lines`: appends to `sections` and to the top-level `entries`, and marks
/// the lines that come to be shared. No line is copied or changed. False when the text ends
/// inside a section. May throw `std::bad_alloc`, with a part of the index built.
bool LoadSections(ConfigLineList& lines, const SectionSyntax::SectionTokens& tokens,
                  ConfigSectionList& sections, ConfigEntryList& entries);

}  // namespace Configuration

#endif
