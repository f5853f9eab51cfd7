// The real program in a process of its own, and waiting for what it does.
#pragma once

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

// Waits until the condition holds; false when it doesn't for longer than any machine needs.
template <class Condition>
bool eventually(Condition condition) {
    auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(120);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

// How often the part stands in the text.
inline std::size_t count(std::string const& text, std::string const& part) {
    std::size_t found = 0;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++found;
    }
    return found;
}

class HostProcess {
public:
    // Starts the program in the directory; its output goes to the files "out" and "err" there, or
    // to the terminal if one is given. Standard input is a descriptor or nothing.
    HostProcess(std::filesystem::path const& directory, std::vector<std::string> arguments,
                int input = -1, int terminal = -1)
        : pidM(::fork()) {
        if (pidM < 0) {
            throw std::runtime_error("no process");
        }
        if (pidM == 0) {
            if (::chdir(directory.c_str()) != 0) {
                ::_exit(99);
            }
            ::setenv("PIPELINE_HOST_MODULE_PATH", HOST_TEST_MODULES, 1);
            ::dup2(input < 0 ? ::open("/dev/null", O_RDONLY) : input, STDIN_FILENO);
            ::dup2(terminal < 0 ? newFile("out") : terminal, STDOUT_FILENO);
            ::dup2(terminal < 0 ? newFile("err") : terminal, STDERR_FILENO);
            arguments.insert(arguments.begin(), "pipeline-host");
            std::vector<char*> words;
            for (auto& argument : arguments) {
                words.push_back(argument.data());
            }
            words.push_back(nullptr);
            ::execv(HOST_PROGRAM, words.data());
            ::_exit(99);
        }
    }
    HostProcess(HostProcess const&) = delete;
    HostProcess& operator=(HostProcess const&) = delete;
    ~HostProcess() {
        if (pidM > 0) {
            ::kill(pidM, SIGKILL);
            wait();
        }
    }

    void signal(int number) const { ::kill(pidM, number); }

    // The exit code, or minus the signal that ended it.
    int wait() {
        int status = 0;
        ::waitpid(pidM, &status, 0);
        pidM = 0;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

private:
    static int newFile(char const* name) {
        return ::open(name, O_WRONLY | O_CREAT | O_TRUNC | O_APPEND, 0644);
    }

    pid_t pidM;
};
