// The first line describes the EDRs: "t", "n" and "d" are a text, number and date-time field, "{"
// begins a block in the block at hand and "}" ends it. Each is named by a letter of its own in its
// block, from "a" on. EDRs follow, one a line.
#include "EDR/Container.h"
#include "EDR/Description.h"
#include "EDR/Iterator.h"
#include "FuzzInput.h"
#include "base/EscapedText.h"
#include "input/EdrLineParser.h"
#include "input/ParsedEdrs.h"

#include <optional>

namespace {

EDR::Description descriptionOf(std::string_view text) {
    static constexpr std::string_view types = "tnd";
    EDR::Description description;
    std::vector<EDR::BlockIndex> open = {EDR::Description::root()};
    std::vector<char> nextNames = {'a'};
    for (char const c : text) {
        if (c == '}' && open.size() > 1) {
            open.pop_back();
            nextNames.pop_back();
        } else if (nextNames.back() > 'z') {
            continue;
        } else if (c == '{') {
            std::string const name(1, nextNames.back()++);
            open.push_back(description.addBlock(open.back(), name));
            nextNames.push_back('a');
        } else if (auto const type = types.find(c); type != std::string_view::npos) {
            std::string const name(1, nextNames.back()++);
            description.addField(open.back(), name, static_cast<EDR::FieldType>(type));
        }
    }
    return description;
}

std::string nameOf(BAS::String const& path) {
    return host::quotedText(path.view().substr(path.view().rfind('.') + 1));
}

// Writes what a container holds as a line of JSON, read through iterators and by positions alike.
class LineWriter {
public:
    LineWriter(EDR::Description const& description, EDR::Container& container)
        : descriptionM(description), containerM(container) {
        static constexpr char const* kinds[] = {"HEADER", "TRAILER", "DETAIL"};
        textM = R"({"RECORD":")" + std::string(kinds[container.recordKind() - 1]) + '"';
        writeMembers(EDR::Description::root().blockKind(), nullptr);
    }
    std::string const& text() const { return textM; }

private:
    void writeMembers(std::uint32_t number, EDR::Iterator* iterator) {
        auto const& kind = descriptionM.blockKinds()[number];
        for (std::uint32_t field = 0; field < kind.fields.size(); ++field) {
            EDR::Index const index(number, field);
            separate();
            textM += nameOf(kind.fields[field].path) + ":" +
                     host::quotedText(checkedText(index, iterator).view());
        }
        for (auto const child : kind.children) {
            separate();
            textM += nameOf(descriptionM.blockKinds()[child].path) + ":[";
            writeBlocks(EDR::BlockIndex(child), iterator);
            textM += ']';
        }
        textM += '}';
    }

    // A walk begins at the top: a reset below it would move the blocks above.
    void writeBlocks(EDR::BlockIndex const& block, EDR::Iterator* outer) {
        EDR::Iterator own;
        if (outer == nullptr) {
            fuzz::promise(own.setIndex(block) && own.reset(&containerM), "blocks can be walked");
            outer = &own;
        }
        for (positionsM.push_back(0); (*outer)(block); ++positionsM.back()) {
            separate();
            textM += '{';
            writeMembers(block.blockKind(), outer);
        }
        positionsM.pop_back();
    }

    BAS::String const& checkedText(EDR::Index const& index, EDR::Iterator const* iterator) const {
        RWTValOrderedVector<long> positions;
        for (auto const position : positionsM) {
            positions.append(position);
        }
        auto const& text = containerM.getString(index, positions);
        fuzz::promise(iterator == nullptr || iterator->getString(index) == text,
                      "a field is the same at the cursor and by positions");
        if (std::count(positionsM.begin(), positionsM.end(), 0) ==
            static_cast<long>(positionsM.size())) {
            checkFirst(index, text);
        }
        return text;
    }

    void checkFirst(EDR::Index const& index, BAS::String const& text) const {
        long number = 0;
        text.toNum(number);
        fuzz::promise(containerM.getString(index) == text, "the first is the first");
        fuzz::promise(containerM.getLong(index) == number, "a number is its text's");
        fuzz::promise(containerM.getDateTime(index).seconds() ==
                          BAS::DateTime::fromText(text.view()).seconds(),
                      "a date-time is its text's");
    }

    void separate() {
        if (textM.back() != '{' && textM.back() != '[') {
            textM += ',';
        }
    }

    EDR::Description const& descriptionM;
    EDR::Container& containerM;
    std::string textM;
    std::vector<long> positionsM;
};

// What was taken, as a line; nothing when the line was rejected.
std::optional<std::string> take(host::EdrLineParser& parser, EDR::Description const& description,
                                EDR::Container& container, std::string line) {
    line.reserve(line.size() + host::EdrLineParser::padding);
    try {
        host::ParsedEdrs edrs;
        parser.parse(line, edrs);
        edrs.fill(container, 0);
    } catch (host::EdrLineError const& error) {
        fuzz::promise(*error.what() != '\0', "a rejection has a reason");
        fuzz::promise(error.column().value_or(1) >= 1 &&
                          error.column().value_or(1) <= std::max<std::size_t>(line.size(), 1),
                      "a rejection has a place in the line");
        return std::nullopt;
    }
    return LineWriter(description, container).text();
}

} // namespace

// A line is taken or rejected, whatever the lines before it were; what was taken can be written so
// that it is taken again as it was.
int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    auto const lines = fuzz::pieces(fuzz::textOf(data, size), '\n');
    auto const description = descriptionOf(lines.front());
    EDR::Container container(description);
    EDR::Container other(description);
    host::EdrLineParser parser(description);
    host::EdrLineParser second(description);
    for (auto line = lines.begin() + 1; line < lines.end(); ++line) {
        auto const taken = take(parser, description, container, *line);
        host::EdrLineParser fresh(description);
        fuzz::promise(take(fresh, description, other, *line) == taken, "a line is by itself");
        fuzz::promise(!taken || take(second, description, other, *taken) == taken,
                      "what was taken is taken again");
    }
    return 0;
}
