// Texts as files, and what the reader finds in them.
#pragma once

#include "facts/FactReader.h"
#include "findings/Judge.h"
#include "support/TemporaryDirectory.h"

#include <fstream>
#include <iterator>
#include <set>

namespace reader {

inline std::string textOf(std::filesystem::path const& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

inline std::string demoDump() {
    return textOf(DEMO_DUMP);
}

// The text with the first occurrence replaced; it has to be there.
inline std::string edited(std::string text, std::string const& from, std::string const& to) {
    auto const at = text.find(from);
    if (at == std::string::npos) {
        throw std::invalid_argument("the dump has no " + from);
    }
    return text.replace(at, from.size(), to);
}

// Writes the text to a file and calls the visitor with each of its events.
template <class Visitor>
void forEachEventOf(std::string const& text, Visitor const& visit,
                    std::vector<std::string>* notices = nullptr) {
    support::TemporaryDirectory const directory;
    auto const path = directory.path() / "dump.txt";
    std::ofstream(path, std::ios::binary) << text;
    InputFile file(path.string());
    EventReader events(file, [&](LineNumber line, std::string const& notice) {
        if (notices != nullptr) {
            notices->push_back(std::to_string(line) + ": " + notice);
        }
    });
    EventText event;
    while (events.next(event)) {
        visit(event);
    }
}

// "kind customer subject" of each finding.
inline std::multiset<std::string> findingsOf(std::string const& text) {
    std::multiset<std::string> found;
    FactReader reader;
    forEachEventOf(text, [&](EventText const& event) {
        if (event.isOutside) {
            return;
        }
        std::vector<Finding> findings;
        auto const& facts = reader.read(event);
        judge(facts, findings);
        for (auto const& finding : findings) {
            found.insert(std::string(about(finding.kind).name) + " " +
                         std::string(facts.customer.text) + " " + finding.subject);
        }
    });
    return found;
}

} // namespace reader
