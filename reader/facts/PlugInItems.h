// Lines that the plug-in writes alike into reports and dumps: the owners who share, the
// discounts and sponsorships that were used, and the price model codes.
#pragma once

#include "facts/EventFacts.h"
#include "text/PlugInLines.h"

namespace reader {

// Takes a line of an owner, such as its heading; false when it is none.
bool readOwnerRow(std::string_view line, LineNumber number, std::deque<SharingOwner>& owners);

// What begins the lines of an item.
struct ItemLabels {
    std::string_view object;
    std::string_view model;
};
inline constexpr ItemLabels ownItemLabels{objectLabel, modelLabel};
inline constexpr ItemLabels sharedItemLabels{sharedObjectLabel, sharedModelLabel};

// The price model codes of a line, each followed by a gap.
void splitCodes(std::string_view codes, LineNumber line, EventFacts& facts);

// Takes a line of an item; false when it is none.
bool readItemLine(std::string_view line, LineNumber number, ItemLabels const& labels,
                  std::vector<UsedItem>& items);

} // namespace reader
