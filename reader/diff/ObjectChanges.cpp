#include "diff/ObjectChanges.h"

#include <fmt/format.h>

#include <set>

namespace reader {

namespace {

using List = KeptObject::List;
using Row = std::vector<std::string>;

std::string keyOf(Row const& row, std::size_t columns) {
    std::string key;
    for (std::size_t i = 0; i < std::min(columns, row.size()); ++i) {
        key += (i > 0 ? " " : "") + row[i];
    }
    return key;
}

bool isUnique(List const& list, std::size_t columns) {
    std::set<std::string> keys;
    return std::all_of(list.rows.begin(), list.rows.end(),
                       [&](Row const& row) { return keys.insert(keyOf(row, columns)).second; });
}

// Of a list that nobody knows: the fewest leading columns that tell its rows apart in both files.
std::size_t keyColumnsOf(List const& older, List const& newer) {
    auto columns = std::max<std::size_t>(older.keyColumns, newer.keyColumns);
    if (columns == 0) {
        do {
            ++columns;
        } while (columns < older.headings.size() &&
                 (!isUnique(older, columns) || !isUnique(newer, columns)));
    }
    return columns;
}

// Rows by their key; a key that comes again has its occurrence with it.
std::map<std::string, Row const*> keyedRows(List const& list, std::size_t columns) {
    std::map<std::string, Row const*> rows;
    for (auto const& row : list.rows) {
        auto const key = keyOf(row, columns);
        auto unique = key;
        for (int occurrence = 2; rows.contains(unique); ++occurrence) {
            unique = fmt::format("{} #{}", key, occurrence);
        }
        rows[unique] = &row;
    }
    return rows;
}

class Comparison {
public:
    Comparison(KeptObject const& older, KeptObject const& newer) : olderM(older), newerM(newer) {}

    std::vector<Change> run() {
        if (cameOrWent()) {
            return std::move(changesM);
        }
        compareFacts();
        static List const noList;
        for (auto const& list : newerM.lists) {
            auto const* const before = listIn(olderM, list.noun);
            compareLists(before == nullptr ? noList : *before, list, list.noun);
        }
        for (auto const& list : olderM.lists) {
            if (listIn(newerM, list.noun) == nullptr) {
                compareLists(list, noList, list.noun);
            }
        }
        compareLines(olderM, newerM, "gone");
        compareLines(newerM, olderM, "new");
        return std::move(changesM);
    }

private:
    static std::string const* factIn(KeptObject const& object, std::string const& name) {
        auto const found = std::find_if(object.facts.begin(), object.facts.end(),
                                        [&](auto const& fact) { return fact.first == name; });
        return found == object.facts.end() ? nullptr : &found->second;
    }
    static List const* listIn(KeptObject const& object, std::string const& noun) {
        auto const found = std::find_if(object.lists.begin(), object.lists.end(),
                                        [&](List const& list) { return list.noun == noun; });
        return found == object.lists.end() ? nullptr : &*found;
    }

    // What else it has follows from that.
    bool cameOrWent() {
        bool const wasAbsent = factIn(olderM, "in memory") != nullptr;
        bool const isAbsent = factIn(newerM, "in memory") != nullptr;
        if (wasAbsent != isAbsent) {
            add({}, {}, wasAbsent ? "not in memory → in memory" : "in memory → not in memory");
        }
        return wasAbsent != isAbsent;
    }

    void compareFacts() {
        for (auto const& [name, value] : newerM.facts) {
            auto const* const before = factIn(olderM, name);
            auto const was = before == nullptr ? std::string() : *before;
            if (was != value) {
                add({}, {}, fmt::format("{} {} → {}", name, orNothing(was), orNothing(value)));
            }
        }
    }

    void compareLists(List const& older, List const& newer, std::string const& noun) {
        auto const columns = keyColumnsOf(older, newer);
        auto const before = keyedRows(older, columns);
        auto const after = keyedRows(newer, columns);
        for (auto const& [key, row] : after) {
            auto const found = before.find(key);
            if (found == before.end()) {
                add(noun, key, "new");
            } else {
                compareRows(older, *found->second, newer, *row, noun, key);
            }
        }
        for (auto const& [key, row] : before) {
            if (!after.contains(key)) {
                add(noun, key, "gone");
            }
        }
    }

    void compareRows(List const& older, Row const& before, List const& newer, Row const& after,
                     std::string const& noun, std::string const& key) {
        std::string differences;
        for (std::size_t i = 0; i < newer.headings.size(); ++i) {
            auto const column =
                std::find(older.headings.begin(), older.headings.end(), newer.headings[i]) -
                older.headings.begin();
            auto const at = static_cast<std::size_t>(column);
            auto const was = at < before.size() ? before[at] : std::string("nothing");
            if (was != after[i]) {
                differences += fmt::format("{}{} {} → {}", differences.empty() ? "" : ", ",
                                           newer.headings[i], was, after[i]);
            }
        }
        if (!differences.empty()) {
            add(noun, key, differences);
        }
    }

    static std::string_view orNothing(std::string_view text) {
        return text.empty() ? "nothing" : text;
    }

    // Of the row of a list, or of the object itself. The same may happen to many of them.
    void add(std::string const& noun, std::string const& key, std::string const& what) {
        auto const kind = newerM.id.substr(0, newerM.id.rfind(' '));
        auto const list = noun.empty() ? std::string() : " " + noun;
        auto const row = noun.empty() ? std::string() : fmt::format("{} {}", list, key);
        changesM.push_back({fmt::format("{}{}: {}", newerM.id, row, what),
                            fmt::format("{}{}: {}", kind, list, what)});
    }

    void compareLines(KeptObject const& from, KeptObject const& in, char const* what) {
        for (auto const& line : from.lines) {
            if (std::find(in.lines.begin(), in.lines.end(), line) == in.lines.end()) {
                changesM.push_back({fmt::format("{}: line \"{}\": {}", newerM.id, line, what), {}});
            }
        }
    }

    KeptObject const& olderM;
    KeptObject const& newerM;
    std::vector<Change> changesM;
};

} // namespace

KeptObject::KeptObject(HeldObject const& object)
    : id(object.id), question(object.question), lines(object.lines.begin(), object.lines.end()) {
    for (auto const& fact : object.facts) {
        facts.emplace_back(fact.name, fact.value);
    }
    for (auto const& held : object.lists) {
        auto const& table = *held.table;
        List list{std::string(held.noun), held.keyColumns, {}, {}};
        for (std::size_t column = 0; column < table.columnCount; ++column) {
            list.headings.emplace_back(table.heading(column));
        }
        for (std::size_t row = 0; row < table.rowCount; ++row) {
            auto& cells = list.rows.emplace_back();
            for (std::size_t column = 0; column < table.columnCount; ++column) {
                cells.emplace_back(table.cell(row, column));
            }
        }
        lists.push_back(std::move(list));
    }
}

std::vector<Change> changesBetween(KeptObject const& older, KeptObject const& newer) {
    return Comparison(older, newer).run();
}

} // namespace reader
