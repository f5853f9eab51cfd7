#include "base/YamlTree.h"

#include "base/WholeFile.h"

#include <fmt/format.h>
#include <simdjson.h>
#include <yaml-cpp/eventhandler.h>
#include <yaml-cpp/exceptions.h>
#include <yaml-cpp/mark.h>
#include <yaml-cpp/parser.h>

#include <algorithm>
#include <fstream>
#include <optional>
#include <sstream>

namespace host {

namespace {

FilePosition positionOf(YAML::Mark const& mark) {
    return mark.is_null() ? FilePosition() : FilePosition{mark.line + 1, mark.column + 1};
}

// The length of the UTF-8 character that begins there, or 0 when none does.
std::size_t characterLength(std::string_view text) {
    auto const lead = static_cast<unsigned char>(text.front());
    std::size_t const length = lead < 0x80 ? 1 : lead < 0xe0 ? 2 : lead < 0xf0 ? 3 : 4;
    auto const character = text.substr(0, length);
    return simdjson::validate_utf8(character.data(), character.size()) ? length : 0;
}

// The YAML parser turns the escapes \N and \_, U+0085 and U+00A0, into single bytes that aren't
// UTF-8.
std::string withWholeCharacters(std::string const& value) {
    std::string text;
    for (std::string_view rest = value; !rest.empty();) {
        auto const length = characterLength(rest);
        if (length == 0) {
            text += '\xc2';
        }
        text += rest.substr(0, std::max<std::size_t>(length, 1));
        rest.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return text;
}

// Far more than anything here has; the parser gives up later, and doesn't say why.
constexpr std::size_t mostLevels = 100;

// Builds the tree from the parser's events.
class TreeBuilder : public YAML::EventHandler {
public:
    explicit TreeBuilder(Problems& problems) : problemsM(problems) {}

    YamlNode takeRoot() { return std::move(rootM); }

    void OnDocumentStart(YAML::Mark const& /*mark*/) override {}
    void OnDocumentEnd() override {}

    void OnNull(YAML::Mark const& mark, YAML::anchor_t /*anchor*/) override { addText(mark, {}); }
    void OnScalar(YAML::Mark const& mark, std::string const& /*tag*/, YAML::anchor_t /*anchor*/,
                  std::string const& value) override {
        addText(mark, withWholeCharacters(value));
    }
    void OnAlias(YAML::Mark const& mark, YAML::anchor_t /*anchor*/) override {
        problemsM.add(positionOf(mark), "an alias can't be used here, write the value out");
        addText(mark, {});
    }
    void OnSequenceStart(YAML::Mark const& mark, std::string const& /*tag*/,
                         YAML::anchor_t /*anchor*/, YAML::EmitterStyle::value /*style*/) override {
        open(YamlNode::Kind::sequence, mark);
    }
    void OnSequenceEnd() override { close(); }
    void OnMapStart(YAML::Mark const& mark, std::string const& /*tag*/, YAML::anchor_t /*anchor*/,
                    YAML::EmitterStyle::value /*style*/) override {
        open(YamlNode::Kind::map, mark);
    }
    void OnMapEnd() override { close(); }

private:
    struct Key {
        std::string text;
        FilePosition position;
    };
    // A map or sequence that is being read, with the key whose value comes next.
    struct OpenNode {
        YamlNode node;
        std::optional<Key> key;
    };

    void addText(YAML::Mark const& mark, std::string const& text) {
        YamlNode node;
        node.position = positionOf(mark);
        node.text = text;
        add(std::move(node));
    }

    void open(YamlNode::Kind kind, YAML::Mark const& mark) {
        if (openM.size() == mostLevels) {
            problemsM.add(positionOf(mark), fmt::format("nested deeper than {} levels, expected "
                                                        "less",
                                                        mostLevels));
            problemsM.throwIfAny();
        }
        YamlNode node;
        node.kind = kind;
        node.position = positionOf(mark);
        openM.push_back({std::move(node), std::nullopt});
    }

    void close() {
        auto node = std::move(openM.back().node);
        openM.pop_back();
        add(std::move(node));
    }

    void add(YamlNode node) {
        if (openM.empty()) {
            rootM = std::move(node);
            return;
        }
        auto& parent = openM.back();
        if (parent.node.kind == YamlNode::Kind::sequence) {
            parent.node.items.push_back(std::move(node));
        } else if (!parent.key) {
            takeKey(parent, std::move(node));
        } else {
            addMember(parent.node, *parent.key, std::move(node));
            parent.key.reset();
        }
    }

    void takeKey(OpenNode& parent, YamlNode node) {
        if (node.kind != YamlNode::Kind::text) {
            problemsM.add(node.position, "a key must be a text");
        }
        parent.key = Key{std::move(node.text), node.position};
    }

    void addMember(YamlNode& map, Key const& key, YamlNode value) {
        if (auto const* const first = map.find(key.text)) {
            problemsM.add(key.position, "the key '" + key.text +
                                            "' is given twice, first on line " +
                                            std::to_string(first->position.line));
            return;
        }
        map.members.push_back({key.text, key.position, std::move(value)});
    }

    Problems& problemsM;
    std::vector<OpenNode> openM;
    YamlNode rootM;
};

// The YAML parser accepts any bytes, guesses encodings and stops at one of the control characters.
void requireText(std::string_view text, Problems& problems) {
    FilePosition position;
    for (std::size_t length = 1; !text.empty(); text.remove_prefix(length)) {
        length = characterLength(text);
        auto const byte = static_cast<unsigned char>(text.front());
        bool const isControl =
            (byte < 0x20 || byte == 0x7f) && byte != '\t' && byte != '\n' && byte != '\r';
        if (length == 0 || isControl) {
            problems.add(position,
                         length == 0
                             ? fmt::format("not valid UTF-8: the byte {:02X}", byte)
                             : fmt::format("the control character U+{:04X} can't be used here, "
                                           "write it as \"\\x{:02x}\"",
                                           byte, byte));
            problems.throwIfAny();
        }
        position.column += static_cast<int>(length);
        if (byte == '\n') {
            position = {position.line + 1, 1};
        }
    }
}

std::string_view lineAt(std::string_view text, int number) {
    for (; number > 0 && text.find('\n') != std::string_view::npos; --number) {
        text.remove_prefix(text.find('\n') + 1);
    }
    return text.substr(0, text.find('\n'));
}

// What is wrong, in words for people who know no grammars, where the parser hasn't any.
std::string reasonOf(YAML::Exception const& error, std::string_view text) {
    auto const line = error.mark.is_null() ? std::string_view() : lineAt(text, error.mark.line);
    if (line.substr(0, line.find_first_not_of(" \t")).find('\t') != std::string_view::npos) {
        return "a tab can't be used to indent a line, expected blanks";
    }
    auto const column = static_cast<std::size_t>(std::max(error.mark.column, 0));
    if (column < line.size() && (line[column] == '@' || line[column] == '`')) {
        return fmt::format("a text that begins with '{}' needs quotes", line[column]);
    }
    return error.msg;
}

} // namespace

YamlMember const* YamlNode::find(std::string_view key) const {
    auto const found = std::find_if(members.begin(), members.end(),
                                    [&](YamlMember const& member) { return member.key == key; });
    return found == members.end() ? nullptr : &*found;
}

std::string_view yamlKindName(YamlNode::Kind kind) {
    switch (kind) {
    case YamlNode::Kind::map:
        return "a mapping";
    case YamlNode::Kind::sequence:
        return "a sequence";
    case YamlNode::Kind::text:
        break;
    }
    return "a text";
}

YamlNode readYamlFile(std::filesystem::path const& file, Problems& problems) {
    return readYaml(readWholeFile(file), problems);
}

YamlNode readYaml(std::string const& bytes, Problems& problems) {
    requireText(bytes, problems);
    std::istringstream text(bytes);
    TreeBuilder tree(problems);
    try {
        YAML::Parser parser(text);
        if (!parser.HandleNextDocument(tree)) {
            problems.add({}, "the file is empty");
            problems.throwIfAny();
        }
        auto root = tree.takeRoot();
        if (parser.HandleNextDocument(tree)) {
            problems.add(tree.takeRoot().position, "a second document isn't expected here");
        }
        return root;
    } catch (YAML::Exception const& error) {
        problems.add(positionOf(error.mark), "not valid YAML: " + reasonOf(error, bytes));
        problems.throwIfAny();
        throw;
    }
}

} // namespace host
