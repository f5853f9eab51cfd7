// Measures `pipeline-host run` against the time in which simdjson alone, in one thread, parses the
// same file and visits everything in it.
//
//   host_bench PIPELINE_HOST DIRECTORY [EDRS [ROUNDS [ENDURANCE]]]
//
// The EDRs, 200,000 without EDRS, come from `pipeline-host generate` and stay in the directory. All
// measurements take turns, 7 rounds without ROUNDS, and the table shows the medians of the time
// that passed and of the processor time, which on a busy machine says more. With ENDURANCE, the
// file is then run so many times in one go, to see whether the memory grows.
#include <fmt/format.h>
#include <simdjson.h>
#include <sqlite3.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

namespace ondemand = simdjson::ondemand;

// What was visited is summed up, so that nothing is left out.
std::size_t visitedBytes = 0;

void visit(simdjson::dom::element element) {
    switch (element.type()) {
    case simdjson::dom::element_type::OBJECT:
        for (auto const [key, value] : simdjson::dom::object(element)) {
            visitedBytes += key.size();
            visit(value);
        }
        return;
    case simdjson::dom::element_type::ARRAY:
        for (auto const value : simdjson::dom::array(element)) {
            visit(value);
        }
        return;
    default:
        visitedBytes += element.get_string().value().size();
    }
}

void visit(ondemand::value& value) {
    switch (value.type().value()) {
    case ondemand::json_type::object:
        for (auto result : value.get_object()) {
            auto&& member = std::move(result).take_value();
            visitedBytes += member.unescaped_key().value().size();
            visit(member.value());
        }
        return;
    case ondemand::json_type::array:
        for (auto result : value.get_array()) {
            auto&& element = std::move(result).take_value();
            visit(element);
        }
        return;
    default:
        visitedBytes += value.get_string().value().size();
    }
}

void forEachLine(std::string const& file,
                 std::function<void(char const* line, std::size_t length)> const& take) {
    std::vector<char> buffer((std::size_t{1} << 20) + simdjson::SIMDJSON_PADDING);
    auto const capacity = buffer.size() - simdjson::SIMDJSON_PADDING;
    int const descriptor = ::open(file.c_str(), O_RDONLY);
    std::size_t end = 0;
    for (ssize_t count = 0;
         (count = ::read(descriptor, buffer.data() + end, capacity - end)) > 0;) {
        end += static_cast<std::size_t>(count);
        auto const* line = buffer.data();
        auto const* const bytesEnd = buffer.data() + end;
        while (auto const* const lineEnd = static_cast<char const*>(
                   std::memchr(line, '\n', static_cast<std::size_t>(bytesEnd - line)))) {
            take(line, static_cast<std::size_t>(lineEnd - line));
            line = lineEnd + 1;
        }
        end = static_cast<std::size_t>(bytesEnd - line);
        std::memmove(buffer.data(), line, end);
    }
    ::close(descriptor);
}

void parseToDom(std::string const& file) {
    simdjson::dom::parser parser;
    forEachLine(file, [&](char const* line, std::size_t length) {
        visit(parser.parse(line, length, false).value());
    });
}

void parseOnDemand(std::string const& file) {
    ondemand::parser parser;
    forEachLine(file, [&](char const* line, std::size_t length) {
        simdjson::padded_string_view const text(line, length, length + simdjson::SIMDJSON_PADDING);
        ondemand::document document = parser.iterate(text);
        ondemand::value value = document.get_value();
        visit(value);
    });
}

// Runs a program, its output thrown away, and returns what it used.
rusage runProgram(std::vector<std::string> words) {
    auto const child = ::fork();
    if (child == 0) {
        ::dup2(::open("/dev/null", O_WRONLY), STDOUT_FILENO);
        std::vector<char*> arguments;
        for (auto& word : words) {
            arguments.push_back(word.data());
        }
        arguments.push_back(nullptr);
        ::execv(arguments.front(), arguments.data());
        ::_exit(127);
    }
    int status = 0;
    rusage used{};
    ::wait4(child, &status, 0, &used);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        throw std::runtime_error(fmt::format("'{}' failed", fmt::join(words, " ")));
    }
    return used;
}

double seconds(std::function<void()> const& work) {
    auto const begin = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

std::string readText(std::filesystem::path const& file) {
    std::ifstream in(file);
    return {std::istreambuf_iterator<char>(in), {}};
}

void makeDatabase(std::filesystem::path const& directory) {
    auto const script =
        readText(directory / "reference-schema.sql") + readText(directory / "reference-data.sql");
    sqlite3* database = nullptr;
    std::filesystem::remove(directory / "reference.db");
    sqlite3_open((directory / "reference.db").c_str(), &database);
    if (sqlite3_exec(database, script.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
        throw std::runtime_error(sqlite3_errmsg(database));
    }
    sqlite3_close(database);
}

// Writes the generated registry with the input so many times, under other names, and without its
// plug-in unless wanted.
std::string makeRegistry(std::filesystem::path const& directory, std::string const& name,
                         std::size_t timesFile, bool hasPlugIn) {
    std::string const files = "Files: [events.jsonl";
    auto text = readText(directory / "registry.yaml");
    auto const filesEnd = text.find(files) + files.size();
    auto const functions = text.find("Functions:") + std::strlen("Functions:");
    if (!hasPlugIn) {
        text.erase(functions).append("\n");
    }
    for (std::size_t i = 1; i < timesFile; ++i) {
        auto const another = fmt::format("events-{}.jsonl", i);
        std::filesystem::remove(directory / another);
        std::filesystem::create_symlink("events.jsonl", directory / another);
        text.insert(filesEnd, ", " + another);
    }
    auto const file = directory / name;
    std::ofstream(file) << text;
    return file.string();
}

double processorSeconds(rusage const& used) {
    auto const inSeconds = [](timeval const& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return inSeconds(used.ru_utime) + inSeconds(used.ru_stime);
}

// What this process has used until now.
double ownProcessorSeconds() {
    rusage used{};
    ::getrusage(RUSAGE_SELF, &used);
    return processorSeconds(used);
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

struct Measurement {
    std::string name;
    // Returns its processor time.
    std::function<double()> work;
    std::vector<double> times{};
    std::vector<double> processorTimes{};
};

void measure(std::string const& program, std::filesystem::path const& directory, double edrs,
             int rounds) {
    auto const events = (directory / "events.jsonl").string();
    auto const run = [&](std::string const& registry) {
        return [=] {
            return processorSeconds(runProgram({program, "run", registry, "--log-level", "error"}));
        };
    };
    auto const alone = [&](void (*parse)(std::string const&)) {
        return [=] {
            auto const before = ownProcessorSeconds();
            parse(events);
            return ownProcessorSeconds() - before;
        };
    };
    std::vector<Measurement> measurements = {
        {"simdjson, to DOM", alone(parseToDom)},
        {"simdjson, on demand", alone(parseOnDemand)},
        {"run without plug-in", run(makeRegistry(directory, "without.yaml", 1, false))},
        {"run with DataDump", run(makeRegistry(directory, "with.yaml", 1, true))},
    };
    for (int round = 0; round < rounds; ++round) {
        for (auto& each : measurements) {
            each.times.push_back(seconds([&] { each.processorTimes.push_back(each.work()); }));
        }
    }
    auto const& onDemand = measurements[1];
    fmt::print("{:<22}{:>9}{:>12}{:>14}{:>12}{:>14}\n", "", "seconds", "EDRs/s", "to on demand",
               "processor", "to on demand");
    for (auto const& each : measurements) {
        auto const time = median(each.times);
        auto const processorTime = median(each.processorTimes);
        fmt::print("{:<22}{:>9.3f}{:>12.0f}{:>14.2f}{:>12.3f}{:>14.2f}\n", each.name, time,
                   edrs / time, time / median(onDemand.times), processorTime,
                   processorTime / median(onDemand.processorTimes));
    }
}

void measureMemory(std::string const& program, std::filesystem::path const& directory, double edrs,
                   std::size_t times) {
    for (auto const count : {std::size_t{1}, std::max<std::size_t>(times / 10, 1), times}) {
        auto const registry = makeRegistry(directory, "endurance.yaml", count, true);
        rusage used{};
        auto const time = seconds([&] {
            used = runProgram({program, "run", registry, "--log-level", "error"});
        });
        fmt::print("{:>10.0f} EDRs: {:>7.2f} s, {:>7.1f} MiB at most\n",
                   static_cast<double>(count) * edrs, time,
                   static_cast<double>(used.ru_maxrss) / 1024);
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        fmt::print(stderr, "host_bench PIPELINE_HOST DIRECTORY [EDRS [ROUNDS [ENDURANCE]]]\n");
        return EXIT_FAILURE;
    }
    try {
        std::string const program = argv[1];
        std::string const edrs = argc > 3 ? argv[3] : "200000";
        auto const directory = std::filesystem::path(argv[2]) / edrs;
        auto const generating = seconds([&] {
            runProgram(
                {program, "generate", "--events", edrs, "--output", directory.string(), "--force"});
        });
        makeDatabase(directory);
        fmt::print("{} EDRs, {} bytes, generated in {:.2f} s\n", edrs,
                   std::filesystem::file_size(directory / "events.jsonl"), generating);
        measure(program, directory, std::stod(edrs), argc > 4 ? std::stoi(argv[4]) : 7);
        if (argc > 5) {
            measureMemory(program, directory, std::stod(edrs), std::stoul(argv[5]));
        }
        return visitedBytes > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
    } catch (std::exception const& error) {
        fmt::print(stderr, "{}\n", error.what());
        return EXIT_FAILURE;
    }
}
