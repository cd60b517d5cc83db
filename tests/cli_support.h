// Helpers of the command's tests: run the built veltara binary and read its files back.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace vt_cli_test {

struct Outcome {
    int exitCode = -1;
    std::string out;
    std::string err;
};

/// A scratch folder for one test binary, removed when it ends.
inline std::filesystem::path ScratchPath() {
    return std::filesystem::temp_directory_path() /
           ("veltara_cli_test_" + std::to_string(::getpid()));
}
inline std::filesystem::path ScratchDir() {
    static const bool made = std::filesystem::create_directories(ScratchPath());
    (void)made;
    return ScratchPath();
}
struct ScratchCleanup {
    ~ScratchCleanup() {
        std::error_code ec;
        std::filesystem::remove_all(ScratchPath(), ec);
    }
};
inline const ScratchCleanup kScratchCleanup;

inline std::string ReadFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

/// Runs `veltara ARGS` through the shell (after `prefix`, e.g. a ulimit), capturing standard
/// output, standard error and the exit code. ARGS may redirect standard output itself.
inline Outcome RunVeltara(const std::string& args, const std::string& prefix = "") {
    const std::filesystem::path errFile = ScratchDir() / "stderr.txt";
    const std::string command =
        prefix + std::string(VT_CLI_PATH) + " " + args + " 2>" + errFile.string();
    Outcome o;
    FILE* pipe = ::popen(command.c_str(), "r");
    if (pipe == nullptr) return o;
    char buf[4096];
    for (size_t n; (n = std::fread(buf, 1, sizeof buf, pipe)) > 0;) o.out.append(buf, n);
    const int status = ::pclose(pipe);
    o.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    o.err = ReadFile(errFile);
    return o;
}

inline std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

}  // namespace vt_cli_test
