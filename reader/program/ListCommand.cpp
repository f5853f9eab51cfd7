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
            std::vector<std::string> headings;
            for (auto const& column : columns) {
                headings.emplace_back(column.heading);
            }
            line(headings, fileColumn.heading);
        }
    }

    void add(EventFacts const& event, std::string const& file) {
        auto const seconds = chargingSeconds(event.chargingStart.text);
        std::string models;
        for (auto const& code : event.priceModels) {
            models += (models.empty() ? "" : " ") + printable(code.text);
        }
        line({std::to_string(event.number), std::to_string(event.line),
              printable(event.customer.text), printable(event.service.text),
              (seconds ? isoTime(*seconds) + " " : "") + printable(event.chargingStart.text),
              printable(event.account.text), printable(event.ratePlan.text), models},
             file);
    }

    void end() { outM.flush(); }

private:
    void line(std::vector<std::string> const& cells, std::string const& file) {
        std::string text;
        if (hasFileM) {
            text = terminalM.isTerminal ? fitted(file, fileColumn.width) + " " : file + '\t';
        }
        for (std::size_t i = 0; i < cells.size(); ++i) {
            if (!terminalM.isTerminal) {
                text += (i > 0 ? "\t" : "") + cells[i];
            } else {
                text += columns[i].width == 0 ? cells[i] : fitted(cells[i], columns[i].width) + " ";
            }
        }
        if (terminalM.isTerminal) {
            text = fitted(text, terminalM.width);
            text.erase(text.find_last_not_of(' ') + 1);
        }
        outM.write(text += '\n');
    }

    Output outM;
    Terminal terminalM;
    bool hasFileM;
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
        if (options.files.size() > 1) {
            keys.add(event.customer.text, event.service.text, text, file, walk.files());
        }
        if (options.filter.lets(event)) {
            list.add(event, walk.files()[file]);
        }
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
        bool const isShown =
            showsAll || (!text.isOutside && options.filter.lets(reader.read(text)));
        if (isShown) {
            out.write(text.bytes);
        }
    });
    out.flush();
    return done;
}

} // namespace reader
