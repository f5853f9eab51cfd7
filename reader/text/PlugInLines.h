// The lines that the plug-in itself writes into its two texts, character for character.
#pragma once

#include "text/Lines.h"

#include <array>
#include <span>

namespace reader {

inline constexpr std::string_view beginLabel = "Begin: ";
inline constexpr std::string_view dumpKeyLabel = "Event type: Identifier= ";
inline constexpr std::string_view reportKeyLabel = "Event type= Identifier=";
inline constexpr std::string_view serviceCodeLabel = "   Service Code = ";

// The six event rows, in their order.
inline constexpr std::array<std::string_view, 6> eventRowLabels = {
    "Event Service Id         = ", "Event Service Type       = ", "Event Event Type         = ",
    "Charging Start Time Stamp= ", "Event Account id         = ", "Event Balance Group id   = "};

inline constexpr std::string_view codesLabel = "Used Price model codes: ";
inline constexpr std::string_view codesGap = "   ";

inline constexpr std::string_view objectLabel = "    Discount Object id    : ";
inline constexpr std::string_view modelLabel = "    Discount model name   : ";
inline constexpr std::string_view sharedObjectLabel = "     Discount/Sponsorship Object id    : ";
inline constexpr std::string_view sharedModelLabel = "     Discount/Sponsorship model name   : ";

inline constexpr std::string_view ownerHeading = "    Sharing owner info:";
inline constexpr std::array<std::string_view, 4> ownerRowLabels = {
    "    Account id : ", "    Owner id   : ", "    Owner Type : ", "    BalGrp id  : "};
inline constexpr std::string_view ownerBalancesLabel = "Sharing owner Balance Information:";

// A heading of a dump's section with the ruler below it. It begins with the end of a line, and an
// empty one.
struct Heading {
    std::string_view text;
    std::size_t lineEnds;

    explicit constexpr Heading(std::string_view heading)
        : text(heading),
          lineEnds(static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'))) {}

    Place after(Place begin) const { return {begin.at + text.size(), begin.line + lineEnds}; }
};
inline constexpr Heading accountHeading{"\n\nEvent Account Info:\n--------------------\n"};
inline constexpr Heading productHeading{
    "\n\nUsed Rating product Info:\n-------------------------\n"};
inline constexpr Heading balancesHeading{"\n\nEvent's owner Balance Information:"};
inline constexpr Heading ownDiscountsHeading{"\n\nEvent's own Discount:\n---------------------\n"};
inline constexpr Heading sharingHeading{"\n\nAll DiscountSharing & Sponsorship Information:\n"
                                        "--------------------------------------------------\n"};
inline constexpr std::string_view codesRuler = "\n----------------------- \n";

// Whether the heading begins there.
inline bool isHeadingAt(LinedText const& text, Place place, Heading const& heading) {
    return text.bytes().substr(place.at).starts_with(heading.text);
}

// Where the first of the headings begins at or after a place; the end of the text when none does.
Place findHeading(LinedText const& text, Place from, std::span<Heading const> headings);
inline Place findHeading(LinedText const& text, Place from, Heading const& heading) {
    return findHeading(text, from, std::span(&heading, 1));
}

// The lines of a report besides rows and items.
inline constexpr std::string_view reportProductHeading = "  Used Rating product info:";
inline constexpr std::string_view reportPlanLabel = "    Used Rate Plan code   : ";
inline constexpr std::string_view reportCodesLabel = "    Used Price model codes: ";
inline constexpr std::string_view reportOwnHeading = "  Event's own Discount:";
inline constexpr std::string_view reportSharingHeading = "  DiscountSharing & Sponsorship:";
inline constexpr std::string_view reportRuler =
    "----------------------------------------------------------------------";

} // namespace reader
