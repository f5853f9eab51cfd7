// The tables of registry keys beside what the host guide and the manual page say of them.
#include "registry/RegistryKeys.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <fstream>
#include <set>
#include <sstream>

namespace {

using testing::ElementsAreArray;

using Lines = std::vector<std::string>;

template <class Object>
std::string typeOf(host::ModuleNameKey<Object> const&) {
    return "name";
}
template <class Object, class Path>
std::string typeOf(host::PathKey<Object, Path> const&) {
    return "path";
}
template <class Object>
std::string typeOf(host::DropDirectoryKey<Object> const&) {
    return "path";
}
template <class Object>
std::string typeOf(host::NumberKey<Object> const& kind) {
    return fmt::format("number, {} to {}", kind.least, kind.most);
}
template <class Object>
std::string typeOf(host::TextKey<Object> const&) {
    return "text";
}
template <class Object>
std::string typeOf(host::TruthKey<Object> const&) {
    return "true or false";
}
template <class Object>
std::string typeOf(host::FileModeKey<Object> const&) {
    return "octal digits";
}
template <class Object>
std::string typeOf(host::InputFilesKey<Object> const&) {
    return "list of paths";
}
template <class Object>
std::string typeOf(host::NameKey<Object> const&) {
    return "name";
}
template <class Object>
std::string typeOf(host::TextsKey<Object> const&) {
    return "list of texts";
}
template <class Object>
std::string typeOf(host::PartitionsKey<Object> const&) {
    return "numbers";
}
template <class Kind>
std::string typeOf(Kind const&) {
    static_assert(Kind::shape == host::YamlNode::Kind::map);
    return "mapping";
}

// What both documents have to say, in the order of the tables.
class Expectation {
public:
    Expectation() { addMap<host::HostConfiguration>(host::rootKeys, "", ""); }

    Lines rows;     // "NAME | TYPE | DEFAULT"; a default that is told in words is left out
    Lines headings; // of keys with a value, with what is said of a number

private:
    template <class Object>
    void addMap(host::KeyTable<Object> keys, std::string const& prefix, std::string const& scope) {
        for (auto const& key : keys) {
            auto const name = prefix + std::string(key.name);
            auto const presence =
                key.presence == host::Presence::mandatory ? "mandatory" + scope : "";
            std::visit([&](auto const& kind) { add(kind, name, presence); }, key.kind);
            // What is mandatory in a mapping that may be missing.
            auto const inner =
                key.presence != host::Presence::mandatory ? " in `" + name + "`" : scope;
            std::visit([&](auto const& kind) { addBelow(kind, name, inner); }, key.kind);
        }
    }

    template <class Kind>
    void add(Kind const& kind, std::string const& name, std::string const& presence) {
        rows.push_back(fmt::format("{} | {} | {}", name, typeOf(kind), presence));
        if constexpr (!requires { kind.keys; }) {
            headings.push_back(name);
        }
    }

    template <class Object>
    void add(host::NumberKey<Object> const& kind, std::string const& name,
             std::string const& presence) {
        if (!presence.empty()) {
            rows.push_back(fmt::format("{} | {} | {}", name, typeOf(kind), presence));
            headings.push_back(name);
            return;
        }
        auto const otherwise = Object{}.*kind.member;
        rows.push_back(fmt::format("{} | {} | {}", name, typeOf(kind), otherwise));
        headings.push_back(
            fmt::format("{}, {} to {}; {} without it", name, kind.least, kind.most, otherwise));
    }

    template <class Object>
    void add(host::TruthKey<Object> const& kind, std::string const& name, std::string const&) {
        bool const otherwise = Object{}.*kind.member;
        rows.push_back(fmt::format("{} | {} | {}", name, typeOf(kind), otherwise));
        headings.push_back(name);
    }

    template <class Object>
    void add(host::FileModeKey<Object> const& kind, std::string const& name, std::string const&) {
        auto const otherwise = fmt::format("{:04o}", Object{}.*kind.member);
        rows.push_back(fmt::format("{} | {} | {}", name, typeOf(kind), otherwise));
        headings.push_back(name);
    }

    template <class Kind>
    void addBelow(Kind const&, std::string const&, std::string const&) {}

    template <class Object, class Part>
    void addBelow(host::PartKey<Object, Part> const& kind, std::string const& name,
                  std::string const& scope) {
        addMap(kind.keys, name + ".", scope);
    }

    template <class Object>
    void addBelow(host::MapKey<Object> const& kind, std::string const& name,
                  std::string const& scope) {
        addMap(kind.keys, name + ".", scope);
    }

    // Entries whose keys are those of other entries are told by name only.
    template <class Object, class Entry>
    void addBelow(host::EntriesKey<Object, Entry> const& kind, std::string const& name,
                  std::string const&) {
        if (toldM.insert(kind.keys.begin()).second) {
            addMap(kind.keys, name + ".<name>.", "");
            return;
        }
        headings.push_back(name + ".<name>");
        for (auto const& key : kind.keys) {
            rows.push_back(fmt::format("{}.<name>.{} |  | ", name, key.name));
        }
    }

    std::set<void const*> toldM;
};

// The lines from one that begins so to the next that begins with the end.
Lines linesOf(std::string const& file, std::string const& begin, std::string const& end) {
    std::ifstream in(std::string(SOURCES) + file);
    Lines lines;
    bool isInside = false;
    for (std::string line; std::getline(in, line);) {
        isInside = isInside ? !line.starts_with(end) : line.starts_with(begin);
        if (isInside) {
            lines.push_back(line);
        }
    }
    return lines;
}

std::string withoutAll(std::string text, std::string const& what) {
    for (auto at = text.find(what); at != std::string::npos; at = text.find(what)) {
        text.erase(at, what.size());
    }
    return text;
}

bool isDefault(std::string const& text) {
    return text.starts_with("mandatory") || text == "false" ||
           std::isdigit(static_cast<unsigned char>(text[0]));
}

TEST(RegistryReference, OfTheGuideTellsTheTables) {
    Lines rows;
    for (auto const& line : linesOf("/docs/host-guide.md", "Below the root name", "Data modules")) {
        if (!line.starts_with("| `")) {
            continue;
        }
        std::istringstream cells(line.substr(2));
        std::string names, type, value, otherwise;
        std::getline(cells, names, '|');
        std::getline(cells >> std::ws, type, '|');
        std::getline(cells >> std::ws, value, '|');
        std::getline(cells >> std::ws, otherwise, '|');
        type.erase(type.find_last_not_of(' ') + 1);
        otherwise.erase(otherwise.find_last_not_of(' ') + 1);
        // "`A.B`, `.C`" are A.B and A.C.
        std::istringstream each(withoutAll(withoutAll(names, "`"), ","));
        std::string first;
        for (std::string name; each >> name;) {
            first = first.empty() ? name.substr(0, name.rfind('.')) : first;
            rows.push_back(fmt::format("{} | {} | {}", name[0] == '.' ? first + name : name, type,
                                       isDefault(otherwise) ? otherwise : ""));
        }
    }
    EXPECT_THAT(rows, ElementsAreArray(Expectation().rows));
}

TEST(RegistryReference, OfTheManualPageTellsTheTables) {
    Lines headings;
    for (auto const& line :
         linesOf("/packaging/pipeline-host-files.5", ".SS Registry", ".SS EDR")) {
        if (line.starts_with(".B ") || line.starts_with(".BI ")) {
            auto name = withoutAll(line.substr(line.find(' ') + 1), " ");
            for (auto at = name.find("NAME"); at != std::string::npos; at = name.find("NAME")) {
                name.replace(at, 4, "<name>");
            }
            headings.push_back(name);
        } else if (auto const at = std::min(line.find(", 0 to "), line.find(", 1 to "));
                   at != std::string::npos) {
            headings.back() += line.substr(at, line.find_last_not_of('.') + 1 - at);
        }
    }
    EXPECT_THAT(headings, ElementsAreArray(Expectation().headings));
}

} // namespace
