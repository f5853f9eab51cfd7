// A directory with a host that reads from "in" and takes commands from "cmd".
#pragma once

#include "HostProcess.h"
#include "support/TemporaryDirectory.h"

#include <gmock/gmock.h>

#include <sys/stat.h>

#include <algorithm>
#include <string>
#include <vector>

class ServiceFixture : public testing::Test {
protected:
    static constexpr char const* object = "host.Pipelines.P.Functions.F.Module";

    ServiceFixture() {
        std::filesystem::create_directory(pathOf("in"));
        std::filesystem::create_directory(pathOf("cmd"));
        std::filesystem::permissions(pathOf("cmd"), std::filesystem::perms::owner_all);
        directoryM.write("edr.yaml", "DETAIL: {A: text}\n");
        writeRegistry("{Directory: in}");
        if (::mkfifo(pathOf("gate").c_str(), 0600) != 0) {
            throw std::runtime_error("no FIFO");
        }
        gateM = ::open(pathOf("gate").c_str(), O_RDWR | O_CLOEXEC);
    }
    ~ServiceFixture() override { ::close(gateM); }

    void writeRegistry(std::string const& input, std::string const& keys = {},
                       std::string const& commandsKeys = {}) const {
        std::string text = "host:\n  Commands: {Directory: cmd";
        text += commandsKeys;
        text += "}\n  DataPool:\n  Pipelines:\n    P:\n      EdrDescription: edr.yaml\n"
                "      BatchSize: 2\n      Input: ";
        text += input;
        text += "\n      Functions:\n        F: {ModuleName: TestCounter, Module: {Trace: ";
        text += pathOf("trace").string();
        text += keys;
        text += "}}\n";
        directoryM.write("r.yaml", text);
    }
    // Batches, and commands with the key "Wait", pass one by one when openGate lets them.
    std::string gate() const { return ", Gate: " + pathOf("gate").string(); }
    void openGate(std::size_t times) const {
        std::string const bytes(times, '.');
        ASSERT_EQ(::write(gateM, bytes.data(), bytes.size()), static_cast<ssize_t>(times));
    }

    std::filesystem::path pathOf(std::string const& name) const { return directoryM.path() / name; }

    // Puts a complete file there.
    void drop(std::string const& name, std::string const& text) const {
        directoryM.write("dropped", text);
        std::filesystem::rename(pathOf("dropped"), pathOf(name));
    }

    // So many EDRs.
    static std::string edrs(int count) {
        std::string text;
        for (int i = 0; i < count; ++i) {
            text += "{\"A\":\"1\"}\n";
        }
        return text;
    }

    // But for what the host keeps there for itself, and what is about to take its place.
    std::vector<std::string> names(std::string const& directory) const {
        std::vector<std::string> found;
        for (auto const& entry : std::filesystem::directory_iterator(pathOf(directory))) {
            auto const name = entry.path().filename().string();
            if (name != ".state" && name != ".status" && !isTemporary(name)) {
                found.push_back(name);
            }
        }
        std::sort(found.begin(), found.end());
        return found;
    }

    static bool isTemporary(std::string const& name) {
        return name.starts_with('.') && name.ends_with(".tmp");
    }

    bool waitForFile(std::string const& name) const {
        return eventually([&] { return std::filesystem::exists(pathOf(name)); });
    }
    // Waits until the command of that name is answered and the host has removed its file.
    bool waitForAnswer(std::string const& name) const {
        return eventually([&] {
            return std::filesystem::exists(pathOf(name + ".result")) &&
                   !std::filesystem::exists(pathOf(name + ".taken"));
        });
    }
    // Waits until the text stands in the file so many times.
    bool waitForText(std::string const& file, std::string const& text,
                     std::size_t times = 1) const {
        return eventually([&] { return count(directoryM.read(file), text) >= times; });
    }

    support::TemporaryDirectory directoryM;

private:
    int gateM = -1;
};
