// The lines that the plug-in itself writes into its two texts, character for character.
#pragma once

#include <array>
#include <string_view>

namespace reader {

inline constexpr std::string_view beginLabel = "Begin: ";
inline constexpr std::string_view dumpKeyLabel = "Event type: Identifier= ";
inline constexpr std::string_view reportKeyLabel = "Event type= Identifier=";
inline constexpr std::string_view serviceCodeLabel = "   Service Code = ";

// The six event rows, in their order.
inline constexpr std::array<std::string_view, 6> eventRowLabels = {
    "Event Service Id         = ", "Event Service Type       = ", "Event Event Type         = ",
    "Charging Start Time Stamp= ", "Event Account id         = ", "Event Balance Group id   = "};

inline constexpr std::string_view planLabel = "Used Rate Plan code: ";
inline constexpr std::string_view planIdLabel = " , Intern RatePlan Id: ";
inline constexpr std::string_view planVersionLabel = " , Intern RatePlan Version: ";
inline constexpr std::string_view impactCategoryLabel = " , Impact Catagory: ";
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

// The headings of a dump's sections with the rulers below them.
inline constexpr std::string_view accountHeading =
    "\n\nEvent Account Info:\n--------------------\n";
inline constexpr std::string_view productHeading =
    "\n\nUsed Rating product Info:\n-------------------------\n";
inline constexpr std::string_view codesRuler = "\n----------------------- \n";
inline constexpr std::string_view balancesHeading = "\n\nEvent's owner Balance Information:";
inline constexpr std::string_view ownDiscountsHeading =
    "\n\nEvent's own Discount:\n---------------------\n";
inline constexpr std::string_view sharingHeading =
    "\n\nAll DiscountSharing & Sponsorship Information:\n"
    "--------------------------------------------------\n";

// The lines of a report besides rows and items.
inline constexpr std::string_view reportProductHeading = "  Used Rating product info:";
inline constexpr std::string_view reportPlanLabel = "    Used Rate Plan code   : ";
inline constexpr std::string_view reportCodesLabel = "    Used Price model codes: ";
inline constexpr std::string_view reportOwnHeading = "  Event's own Discount:";
inline constexpr std::string_view reportSharingHeading = "  DiscountSharing & Sponsorship:";
inline constexpr std::string_view reportRuler =
    "----------------------------------------------------------------------";

} // namespace reader
