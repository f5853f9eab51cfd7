// A page of events for a browser, in one file that needs no other: frame, style and script as they
// stand in the sources, and the events as data that the script unpacks. Texts are held once; the
// events' own texts go compressed into the page as they come.
#pragma once

#include "facts/EventFacts.h"
#include "page/PackedText.h"
#include "page/PageRows.h"

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <unordered_map>
#include <vector>

namespace reader {

// How an event differs from the older file's, in the numbers of the script.
enum class PageChange { none, changed, added, gone };

struct PageKind {
    std::string_view name;
    int severity; // 0 is the worst
    std::string_view sentence;
};

struct PageFinding {
    std::size_t kind;
    std::string text;
    LineNumber line;
};

struct PageEvent {
    EventFacts const& facts;
    std::size_t file;
    std::vector<PageRow> rows;
    std::vector<PageFinding> findings;
    PageChange change = PageChange::none;
    // For each row what the older file had there; empty where it is the same.
    std::vector<std::string> before;
};

class Page {
public:
    // Events may be compared with an older file's.
    Page(std::vector<std::string> const& files, std::vector<PageKind> const& kinds,
         bool isCompared);

    void add(PageEvent const& event);

    // Writes it aside and renames it, but for a pipe or a device. Throws an OutputError.
    void write(std::filesystem::path const& file);

private:
    using Json = nlohmann::json;

    std::size_t numberOf(std::string_view text);
    Json rowsOf(PageEvent const& event);
    Json findingsOf(PageEvent const& event);
    std::string text();

    std::string titleM;
    Json dataM;
    std::unordered_map<std::string, std::size_t> numbersM; // of texts
    PackedText rawM;
};

} // namespace reader
