#include "program/ListCommand.h"

#include "facts/Times.h"
#include "program/EventJudge.h"
#include "program/Program.h"
#include "program/Terminal.h"
#include "program/Walk.h"
#include "text/Output.h"

namespace reader {

namespace {

struct ListColumn {
    char const* heading;
    std::size_t width; // on a terminal; 0: what is left
};
constexpr ListColumn columns[] = {{"Event", 7},      {"Line", 9},        {"Customer", 18},
                                  {"Service", 8},    {"Start", 31},      {"Account", 11},
                                  {"Rate plan", 16}, {"Price models", 0}};
constexpr ListColumn fileColumn{"File", 16};

class EventList {
public:
    explicit EventList(bool hasSeveralFiles)
        : terminalM(Terminal::ofOutput()), hasFileM(hasSeveralFiles) {
        if (terminalM.isTerminal) {
            for (std::size_t i = 0; i < cellsM.size(); ++i) {
                cellsM[i] = columns[i].heading;
            }
            line(fileColumn.heading);
        }
    }

    void add(EventFacts const& event, std::string const& file) {
        for (auto& cell : cellsM) {
            cell.clear();
        }
        auto next = cellsM.begin();
        appendNumber(*next++, event.number);
        appendNumber(*next++, event.line);
        appendPrintable(*next++, event.customer.text);
        appendPrintable(*next++, event.service.text);
        appendStart(*next++, event.chargingStart.text);
        appendPrintable(*next++, event.account.text);
        appendPrintable(*next++, event.ratePlan.text);
        for (auto const& code : event.priceModels) {
            *next += next->empty() ? "" : " ";
            appendPrintable(*next, code.text);
        }
        line(file);
    }

    void end() { outM.flush(); }

private:
    static void appendNumber(std::string& cell, std::uint64_t number) {
        fmt::format_int const digits(number);
        cell.append(digits.data(), digits.size());
    }

    static void appendStart(std::string& cell, std::string_view start) {
        if (auto const seconds = chargingSeconds(start)) {
            cell += isoTime(*seconds);
            cell += ' ';
        }
        appendPrintable(cell, start);
    }

    void line(std::string_view file) {
        lineM.clear();
        if (hasFileM) {
            addCell(printable(file), fileColumn);
        }
        for (std::size_t i = 0; i < cellsM.size(); ++i) {
            addCell(cellsM[i], columns[i]);
        }
        lineM.pop_back(); // what separates cells
        if (terminalM.isTerminal) {
            lineM = fitted(lineM, terminalM.width);
            lineM.erase(lineM.find_last_not_of(' ') + 1);
        }
        lineM += '\n';
        outM.write(lineM);
    }

    void addCell(std::string const& cell, ListColumn const& column) {
        bool const isFitted = terminalM.isTerminal && column.width != 0;
        lineM += isFitted ? fitted(cell, column.width) : cell;
        lineM += terminalM.isTerminal ? ' ' : '\t';
    }

    Output outM;
    Terminal terminalM;
    bool hasFileM;
    // Their memory is used again.
    std::array<std::string, std::size(columns)> cellsM;
    std::string lineM;
};

} // namespace

int listEvents(Options const& options) {
    EventList list(options.files.size() > 1);
    if (options.onlyFindings) {
        forEachJudged(options, [&](JudgedEvent const& judged) {
            if (judged.event.line != 0) {
                list.add(judged.event, judged.file);
            }
        });
        list.end();
        return done;
    }
    Walk walk(options.files);
    FactReader reader;
    KeyRegister keys;
    walk.forEach([&](EventText const& text, std::size_t file) {
        if (text.isOutside) {
            return;
        }
        auto const& event =
            options.filter.needsDiscounts() ? reader.read(text) : reader.readOverview(text);
        if (!options.filter.lets(event)) {
            return;
        }
        if (options.files.size() > 1) {
            keys.add(event.customer.text, event.service.text, text, file, walk.files());
        }
        list.add(event, walk.files()[file]);
    });
    list.end();
    return done;
}

int showEvents(Options const& options) {
    Output out;
    if (options.onlyFindings) {
        forEachJudged(options, [&](JudgedEvent const& judged) { out.write(judged.event.bytes); });
        out.flush();
        return done;
    }
    Walk walk(options.files);
    FactReader reader;
    bool const showsAll = options.filter.letsAllThrough();
    walk.forEach([&](EventText const& text, std::size_t) {
        if (showsAll || (!text.isOutside && options.filter.lets(text, reader))) {
            out.write(text.text.bytes());
        }
    });
    out.flush();
    return done;
}

} // namespace reader
