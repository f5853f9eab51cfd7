#include "page/Page.h"

#include "facts/Times.h"
#include "page/PageAssets.h"
#include "text/Output.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace reader {

namespace {

constexpr int pageVersion = 1;
// The columns of the data that have one entry an event.
constexpr char const* columns[] = {"number",  "file", "line",   "customer", "service",  "start",
                                   "account", "plan", "models", "rows",     "findings", "change"};

std::string joined(std::vector<std::string> const& texts) {
    std::string all;
    for (auto const& text : texts) {
        all += (all.empty() ? "" : ", ") + text;
    }
    return all;
}

std::string htmlText(std::string_view text) {
    std::string escaped;
    for (char const c : text) {
        switch (c) {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        default:
            escaped += static_cast<unsigned char>(c) < 0x20 ? ' ' : c;
        }
    }
    return escaped;
}

// Of hexadecimal digits.
std::string bytesOf(std::string_view digits) {
    std::string bytes;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
        bytes += static_cast<char>(std::stoi(std::string(digits.substr(i, 2)), nullptr, 16));
    }
    return bytes;
}

// The frame with each @NAME@ replaced; what is put in is not looked at again.
std::string filled(std::string_view frame,
                   std::unordered_map<std::string_view, std::string> const& parts) {
    std::string text;
    for (auto mark = frame.find('@'); mark != std::string_view::npos; mark = frame.find('@')) {
        auto const end = frame.find('@', mark + 1);
        text += frame.substr(0, mark);
        text += parts.at(frame.substr(mark + 1, end - mark - 1));
        frame.remove_prefix(end + 1);
    }
    return text.append(frame);
}

// Lets those read a file who may read what its user makes.
bool permitAsUsual(int descriptor) {
    auto const mask = ::umask(0);
    ::umask(mask);
    constexpr mode_t everybody = 0666;
    return ::fchmod(descriptor, everybody & ~mask) == 0;
}

OutputError errorOf(std::filesystem::path const& file, int code) {
    return OutputError(file.string() + ": can't be written: " + std::strerror(code));
}

bool isPipeOrDevice(std::filesystem::path const& file) {
    struct stat about {};
    return ::stat(file.c_str(), &about) == 0 && !S_ISREG(about.st_mode);
}

void writeInPlace(std::filesystem::path const& file, std::string_view text) {
    auto const descriptor = ::open(file.c_str(), O_WRONLY | O_CLOEXEC);
    if (descriptor < 0) {
        throw errorOf(file, errno);
    }
    bool const isWritten = writeAll(descriptor, text);
    if (::close(descriptor) != 0 || !isWritten) {
        throw errorOf(file, errno);
    }
}

// Where links lead, even when nothing is there yet.
std::filesystem::path targetOf(std::filesystem::path file) {
    constexpr int mostLinks = 40;
    std::error_code error;
    for (int i = 0; i < mostLinks && std::filesystem::is_symlink(file, error); ++i) {
        file = file.parent_path() / std::filesystem::read_symlink(file, error);
    }
    return file;
}

// Nobody ever reads half of it.
void writeAside(std::filesystem::path const& file, std::string_view text) {
    auto aside = file.string() + ".XXXXXX";
    auto const descriptor = ::mkostemp(aside.data(), O_CLOEXEC);
    bool const isWritten =
        descriptor >= 0 && writeAll(descriptor, text) && permitAsUsual(descriptor);
    bool const isClosed = descriptor >= 0 && ::close(descriptor) == 0;
    if (!isWritten || !isClosed || ::rename(aside.c_str(), file.c_str()) != 0) {
        auto const code = errno;
        ::unlink(aside.c_str());
        throw errorOf(file, code);
    }
}

} // namespace

Page::Page(std::vector<std::string> const& files, std::vector<PageKind> const& kinds,
           bool isCompared)
    : titleM(joined(files)), dataM({{"version", pageVersion},
                                    {"old", isCompared},
                                    {"files", files},
                                    {"texts", Json::array()},
                                    {"kinds", Json::array()},
                                    {"raw", Json::array()}}) {
    for (auto const& kind : kinds) {
        dataM["kinds"].push_back({kind.name, kind.severity, kind.sentence});
    }
    for (auto const* const column : columns) {
        dataM[column] = Json::array();
    }
}

std::size_t Page::numberOf(std::string_view text) {
    auto const [place, isNew] = numbersM.try_emplace(std::string(text), numbersM.size());
    if (isNew) {
        dataM["texts"].push_back(text);
    }
    return place->second;
}

void Page::add(PageEvent const& event) {
    auto const& facts = event.facts;
    auto const start = chargingSeconds(facts.chargingStart.text);
    auto models = Json::array();
    for (auto const& code : facts.priceModels) {
        models.push_back(numberOf(code.text));
    }
    Json const values[] = {facts.number,
                           event.file,
                           facts.line,
                           numberOf(facts.customer.text),
                           numberOf(facts.service.text),
                           start ? Json(*start) : Json(),
                           numberOf(facts.account.text),
                           numberOf(facts.ratePlan.text),
                           std::move(models),
                           rowsOf(event),
                           findingsOf(event),
                           static_cast<int>(event.change)};
    static_assert(std::size(values) == std::size(columns));
    for (std::size_t i = 0; i < std::size(values); ++i) {
        dataM[columns[i]].push_back(values[i]);
    }
    dataM["raw"].push_back(rawM.size());
    dataM["raw"].push_back(facts.bytes.size());
    rawM.add(facts.bytes);
}

nlohmann::json Page::rowsOf(PageEvent const& event) {
    auto rows = Json::array();
    for (std::size_t i = 0; i < event.rows.size(); ++i) {
        auto const& row = event.rows[i];
        bool const isChanged = i < event.before.size() && !event.before[i].empty();
        rows.push_back(numberOf(row.label));
        rows.push_back(numberOf(row.said));
        rows.push_back(numberOf(row.held));
        rows.push_back(row.heldLine != 0 ? row.heldLine : row.saidLine);
        rows.push_back(isChanged ? Json(numberOf(event.before[i])) : Json(-1));
    }
    return rows;
}

nlohmann::json Page::findingsOf(PageEvent const& event) {
    auto findings = Json::array();
    for (auto const& finding : event.findings) {
        auto const row = rowOfLine(event.rows, finding.line);
        findings.push_back(finding.kind);
        findings.push_back(row ? Json(*row) : Json(-1));
        findings.push_back(numberOf(finding.text));
        findings.push_back(finding.line);
    }
    return findings;
}

void Page::write(std::filesystem::path const& file) {
    if (file == "-") {
        Output out;
        out.write(text());
        out.flush();
    } else if (isPipeOrDevice(file)) {
        writeInPlace(file, text());
    } else {
        writeAside(targetOf(file), text());
    }
}

std::string Page::text() {
    // Bytes that aren't UTF-8 become U+FFFD, as a browser shows them in the raw text.
    PackedText data;
    data.add(dataM.dump(-1, ' ', false, Json::error_handler_t::replace));
    return filled(pageFrame, {{"TITLE", htmlText(titleM)},
                              {"STYLE_HASH", base64(bytesOf(pageStyleHash))},
                              {"SCRIPT_HASH", base64(bytesOf(pageScriptHash))},
                              {"STYLE", std::string(pageStyle)},
                              {"SCRIPT", std::string(pageScript)},
                              {"DATA", base64(data.finish())},
                              {"RAW", base64(rawM.finish())}});
}

} // namespace reader
