#include "facts/ObjectReader.h"

#include "text/Hash.h"

namespace reader {

namespace {

constexpr std::size_t mostObjectBytes = std::size_t{4} << 20U;
constexpr std::string_view absence = ": not in memory";
constexpr char const* moduleTextExpected = "a module's text stands here";

void addUnplaced(MemoryObject const& object, LinedText const& text, Place begin,
                 LineNumber firstLine, UnplacedLines& unplaced) {
    for (auto const number : object.unplaced) {
        auto const line = begin.line + number;
        unplaced.add(firstLine + number, text.restOfLine({text.endOf(line - 1) + 1, line}),
                     moduleTextExpected);
    }
}

} // namespace

ObjectReader::AskedNoun const ObjectReader::askedNouns[nothing] = {
    {"price model", "  price model ", {"    Steps, amounts in ", "    Balance impacts"}},
    {"balance group", "  balance group ", {"    Balances", "    Sub-balances"}},
    {"discount object", "    discount object ", {}},
    {"sponsorship object", "    sponsorship object ", {}},
    {"discount model", "    discount model ", {"      Rules", "      Steps, thresholds"}},
};

// " 2 price models asked", which a wide first number begins at the line's begin.
ObjectReader::Asked ObjectReader::askedIn(std::string_view line, std::string_view& count) {
    constexpr std::string_view ending = " asked";
    if (line.starts_with("  ") || !line.ends_with(ending)) {
        return nothing;
    }
    line.remove_suffix(ending.size());
    line.remove_prefix(indentOf(line));
    count = line.substr(0, line.find(' '));
    if (count.empty() || count.find_first_not_of("0123456789") != std::string_view::npos ||
        count.size() == line.size()) {
        return nothing;
    }
    auto noun = line.substr(count.size() + 1);
    noun.remove_suffix(noun.ends_with('s') ? 1 : 0);
    auto const* const found =
        std::find_if(std::begin(askedNouns), std::end(askedNouns),
                     [&](AskedNoun const& asked) { return asked.noun == noun; });
    return static_cast<Asked>(found - std::begin(askedNouns));
}

void ObjectReader::beginEvent() {
    usedObjectsM = 0;
    usedListsM = 0;
}

bool ObjectReader::limitKept() {
    if (keptBytesM + layoutsM.bytes() <= mostObjectBytes) {
        return false;
    }
    keptM.clear();
    byFirstLineM.clear();
    layoutsM.clear();
    keptBytesM = 0;
    return true;
}

bool ObjectReader::read(LinedText const& text, LineNumber number, bool isOpen, Target const& target,
                        UnplacedLines& unplaced) {
    auto asked = nothing;
    bool anyAsked = false;
    Lines lines(text, number);
    std::string_view line;
    bool isInList = false;
    Place list;
    LineNumber listLine = 0;
    std::vector<std::pair<LineNumber, std::string_view>> unknown;
    auto const endList = [&](Place end) {
        if (isInList) {
            readList(text.part(list, end), listLine, isOpen && end.at == text.size(), asked,
                     *target.memory, unplaced);
            isInList = false;
        }
    };
    while (lines.next(line)) {
        std::string_view count;
        auto const askedNow = askedIn(line, count);
        if (askedNow != nothing) {
            anyAsked = true;
            endList(lines.begin());
            bool const isExpected =
                askedNow == prices ? target.priceModels != nullptr : target.memory != nullptr;
            asked = isExpected ? askedNow : nothing;
            if (!isExpected) {
                unplaced.add(lines.number(), line, "another module's text stands here");
            } else if (asked == prices) {
                *target.priceModelsAsked = {count, lines.number()};
            } else if (asked == discounts || asked == sponsorships) {
                isInList = true;
                list = lines.end();
                listLine = lines.number() + 1;
            }
        } else if (!isInList && asked != nothing && line.starts_with(askedNouns[asked].begin)) {
            auto const begin = lines.begin();
            auto const end = readObject(text, begin, lines.number(), asked, isOpen, target);
            addUnplaced(*objectsOf(asked, target).back().object, text, begin, lines.number(),
                        unplaced);
            lines.goOn(end);
        } else if (!isInList && indentOf(line) < line.size()) {
            unknown.emplace_back(lines.number(), line);
        }
    }
    endList(text.end());
    for (auto const& [unknownNumber, unknownLine] : unknown) {
        if (anyAsked || isSectionLine(unknownLine)) {
            unplaced.add(unknownNumber, unknownLine, moduleTextExpected);
        }
    }
    return anyAsked;
}

std::vector<ShownObject>& ObjectReader::objectsOf(Asked kind, Target const& target) {
    return kind == prices   ? *target.priceModels
           : kind == groups ? target.memory->balanceGroups
                            : target.memory->discountModels;
}

bool ObjectReader::isTitle(std::string_view line, Asked kind) {
    auto const& titles = askedNouns[kind].titles;
    return std::any_of(titles.begin(), titles.end(),
                       [&](std::string_view title) { return line.starts_with(title); });
}

// Returns where the object's text ends: with the first line that is indented no further.
Place ObjectReader::readObject(LinedText const& text, Place begin, LineNumber number, Asked kind,
                               bool isOpen, Target const& target) {
    auto& objects = objectsOf(kind, target);
    auto const firstLine = text.restOfLine(begin);
    auto const* const known =
        kind == groups ? nullptr : knownObject(text.bytes().substr(begin.at), firstLine, kind);
    if (known != nullptr) {
        objects.push_back({&known->object, number});
        return {begin.at + known->text.size(), begin.line + known->lines};
    }
    auto const indent = indentOf(firstLine);
    auto end = text.nextLine(begin);
    while (end.at < text.size() && indentOf(text.restOfLine(end)) > indent) {
        end = text.nextLine(end);
    }
    bool const isObjectOpen = isOpen && end.at == text.size();
    objects.push_back({&takeApart(text.part(begin, end), kind, isObjectOpen), number});
    return end;
}

// The kept object whose text stands here, when the text ends there as the object does.
ObjectReader::KeptObject const*
ObjectReader::knownObject(std::string_view text, std::string_view firstLine, Asked kind) const {
    auto const found = byFirstLineM.find(hashOf(firstLine, kind));
    if (found == byFirstLineM.end() || !text.starts_with(found->second->text)) {
        return nullptr;
    }
    auto const rest = text.substr(found->second->text.size());
    return !rest.empty() && indentOf(rest) <= indentOf(firstLine) ? found->second : nullptr;
}

void ObjectReader::fill(MemoryObject& object, LinedText const& text, Asked kind, bool isOpen) {
    auto const first = text.restOfLine({}).substr(askedNouns[kind].begin.size());
    object.text = text.bytes();
    object.content.read(text.part(text.nextLine({}), text.end()), 1, layoutsM, isOpen);
    object.unplaced.clear();
    for (auto const& item : object.content.items()) {
        if (!item.table && !isTitle(item.text, kind)) {
            object.unplaced.push_back(item.line);
        }
    }
    object.isAbsent = first.ends_with(absence) && object.content.items().empty();
    auto const separator = kind == groups && !object.isAbsent ? std::string_view(" of account ")
                                                              : std::string_view(": ");
    auto const split = std::min(
        object.isAbsent ? first.size() - absence.size() : first.find(separator), first.size());
    object.name = first.substr(0, split);
    object.about = first.substr(std::min(split + separator.size(), first.size()));
}

MemoryObject& ObjectReader::freeObject() {
    if (usedObjectsM == objectsM.size()) {
        objectsM.emplace_back();
    }
    return objectsM[usedObjectsM++];
}

MemoryObject const& ObjectReader::takeApart(LinedText const& text, Asked kind, bool isOpen) {
    if (kind == groups || isOpen) {
        auto& object = freeObject();
        fill(object, text, kind, isOpen);
        return object;
    }
    auto hash = hashOf(text.bytes(), kind);
    auto* kept = &keptM[hash];
    while (*kept != nullptr && (*kept)->text != text.bytes()) {
        hash = mixed(hash, 1);
        kept = &keptM[hash];
    }
    if (*kept == nullptr) {
        *kept = std::make_unique<KeptObject>();
        auto& object = **kept;
        object.text = text.bytes();
        object.lines = text.lineEnds();
        fill(object.object, LineIndex(object.text), kind, false);
        constexpr std::size_t takenApart = 2; // what it takes besides its text, as many times
        keptBytesM += (1 + takenApart) * object.text.size();
    }
    byFirstLineM[hashOf(text.restOfLine({}), kind)] = kept->get();
    return (*kept)->object;
}

void ObjectReader::readList(LinedText const& text, LineNumber number, bool isOpen, Asked kind,
                            HeldMemory& memory, UnplacedLines& unplaced) {
    if (usedListsM == listsM.size()) {
        listsM.emplace_back();
    }
    auto& content = listsM[usedListsM++];
    content.read(text, number, layoutsM, isOpen);
    auto& list = kind == discounts ? memory.discounts : memory.sponsorships;
    auto const begin = askedNouns[kind].begin;
    for (auto const& item : content.items()) {
        if (item.table) {
            list.table = &content.tables()[*item.table];
        } else if (item.text.starts_with(begin) && item.text.ends_with(absence) &&
                   item.text.size() >= begin.size() + absence.size()) {
            list.absent.push_back(
                {item.text.substr(begin.size(), item.text.size() - begin.size() - absence.size()),
                 item.line});
        } else {
            unplaced.add(item.line, item.text, moduleTextExpected);
        }
    }
}

} // namespace reader
