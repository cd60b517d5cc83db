// Helpers of the command's tests: run the built veltara binary, read PNG sizes, and check JSON
// against a schema (a small checker of the schema keywords our schemas use).
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

namespace vt_cli_test {

struct Outcome {
    int exitCode = -1;
    std::string out;
    std::string err;
};

/// A scratch folder for one test binary.
inline std::filesystem::path ScratchDir() {
    static const std::filesystem::path dir = [] {
        auto d = std::filesystem::temp_directory_path() /
                 ("veltara_cli_test_" + std::to_string(::getpid()));
        std::filesystem::create_directories(d);
        return d;
    }();
    return dir;
}

/// Removes the scratch folder when the test binary ends.
struct ScratchCleanup {
    ~ScratchCleanup() {
        std::error_code ec;
        std::filesystem::remove_all(std::filesystem::temp_directory_path() /
                                        ("veltara_cli_test_" + std::to_string(::getpid())),
                                    ec);
    }
};
inline const ScratchCleanup kScratchCleanup;

inline std::string ReadFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

/// Runs `veltara ARGS` through the shell, capturing standard output, standard error and the
/// exit code.
inline Outcome RunVeltara(const std::string& args) {
    const std::filesystem::path errFile = ScratchDir() / "stderr.txt";
    const std::string command = std::string(VT_CLI_PATH) + " " + args + " 2>" + errFile.string();
    Outcome o;
    FILE* pipe = ::popen(command.c_str(), "r");
    if (pipe == nullptr) return o;
    char buf[4096];
    size_t n;
    while ((n = std::fread(buf, 1, sizeof buf, pipe)) > 0) o.out.append(buf, n);
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

/// Width and height from a PNG file's header (signature, then IHDR with big-endian sizes);
/// {-1, -1} when the file is not a PNG.
inline std::pair<int, int> PngSize(const std::filesystem::path& path) {
    const std::string bytes = ReadFile(path);
    if (bytes.size() < 24 || bytes.compare(0, 8, "\x89PNG\r\n\x1a\n") != 0 ||
        bytes.compare(12, 4, "IHDR") != 0) {
        return {-1, -1};
    }
    const auto be32 = [&](size_t at) {
        int v = 0;
        for (size_t i = 0; i < 4; ++i) v = (v << 8) | static_cast<unsigned char>(bytes[at + i]);
        return v;
    };
    return {be32(16), be32(20)};
}

/// Checks `doc` against `schema`; one message per violation, empty when it conforms. Knows
/// type, enum, minimum, maximum, properties, required, additionalProperties (false), items,
/// minItems, maxItems and $ref to "#/$defs/NAME".
class SchemaChecker {
  public:
    explicit SchemaChecker(nlohmann::json root) : mRoot(std::move(root)) {}

    std::vector<std::string> Check(const nlohmann::json& doc) const {
        std::vector<std::string> errors;
        Visit(mRoot, doc, "$", errors);
        return errors;
    }

  private:
    static bool HasType(const nlohmann::json& v, const std::string& type) {
        if (type == "object") return v.is_object();
        if (type == "array") return v.is_array();
        if (type == "string") return v.is_string();
        if (type == "integer") return v.is_number_integer();
        if (type == "number") return v.is_number();
        if (type == "boolean") return v.is_boolean();
        if (type == "null") return v.is_null();
        return false;
    }

    void Visit(const nlohmann::json& schema, const nlohmann::json& v, const std::string& where,
               std::vector<std::string>& errors) const {
        if (schema.contains("$ref")) {
            const std::string ref = schema["$ref"];
            const std::string prefix = "#/$defs/";
            Visit(mRoot["$defs"][ref.substr(prefix.size())], v, where, errors);
            return;
        }
        if (schema.contains("type") && !HasType(v, schema["type"])) {
            errors.push_back(where + ": not of type " + schema["type"].get<std::string>());
            return;
        }
        if (schema.contains("enum")) {
            bool found = false;
            for (const auto& e : schema["enum"]) found = found || e == v;
            if (!found) errors.push_back(where + ": " + v.dump() + " not in enum");
        }
        if (v.is_number()) {
            if (schema.contains("minimum") && v.get<double>() < schema["minimum"].get<double>()) {
                errors.push_back(where + ": below minimum");
            }
            if (schema.contains("maximum") && v.get<double>() > schema["maximum"].get<double>()) {
                errors.push_back(where + ": above maximum");
            }
        }
        if (v.is_object()) {
            for (const auto& key : schema.value("required", nlohmann::json::array())) {
                if (!v.contains(key.get<std::string>())) {
                    errors.push_back(where + ": missing " + key.get<std::string>());
                }
            }
            const nlohmann::json props = schema.value("properties", nlohmann::json::object());
            for (const auto& [key, value] : v.items()) {
                if (props.contains(key)) {
                    Visit(props[key], value, where + "." + key, errors);
                } else if (schema.value("additionalProperties", true) == false) {
                    errors.push_back(where + ": unexpected " + key);
                }
            }
        }
        if (v.is_array()) {
            if (schema.contains("minItems") && v.size() < schema["minItems"].get<size_t>()) {
                errors.push_back(where + ": fewer items than " + schema["minItems"].dump());
            }
            if (schema.contains("maxItems") && v.size() > schema["maxItems"].get<size_t>()) {
                errors.push_back(where + ": more items than " + schema["maxItems"].dump());
            }
            if (schema.contains("items")) {
                for (size_t i = 0; i < v.size(); ++i) {
                    Visit(schema["items"], v[i], where + "[" + std::to_string(i) + "]", errors);
                }
            }
        }
    }

    nlohmann::json mRoot;
};

inline SchemaChecker LoadSchema(const std::string& name) {
    return SchemaChecker(nlohmann::json::parse(ReadFile(std::string(VT_TEST_DATA) + "/" + name)));
}

}  // namespace vt_cli_test
