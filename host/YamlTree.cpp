#include "YamlTree.h"

#include "SystemError.h"

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
        addText(mark, value);
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

std::string readWholeFile(std::filesystem::path const& file) {
    std::error_code error;
    if (std::filesystem::is_directory(file, error)) {
        throw fileStatus("ERR_FILE_NOT_READABLE", file, EISDIR);
    }
    std::ifstream in(file, std::ios::binary);
    std::ostringstream text;
    if (!in || (in.peek() != std::ifstream::traits_type::eof() && !(text << in.rdbuf()))) {
        throw fileStatus("ERR_FILE_NOT_READABLE", file, errno);
    }
    return text.str();
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
    std::istringstream text(readWholeFile(file));
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
        problems.add(positionOf(error.mark), "no YAML: " + error.msg);
        problems.throwIfAny();
        throw;
    }
}

} // namespace host
