// Shared pieces of the veltara command: exit codes, messages, the engine handle and the catalogue.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "veltara.h"

namespace vtcli {

/// Exit codes: 0 success, 1 the engine (or a file) failed, 2 bad arguments.
inline constexpr int kExitOk = 0;
inline constexpr int kExitEngine = 1;
inline constexpr int kExitUsage = 2;

/// Prints "veltara: ARGUMENT: PROBLEM" on stderr and returns kExitUsage.
int UsageError(const std::string& argument, const std::string& problem);

/// Prints "veltara: MESSAGE while CONTEXT (engine error N)" on stderr and returns kExitEngine.
int EngineError(int32_t number, const std::string& context);

/// Prints "veltara: PROBLEM" on stderr (a file that could not be written) and returns
/// kExitEngine.
int FileError(const std::string& problem);

/// One engine for the life of a command.
class Engine {
  public:
    Engine() = default;
    ~Engine() { vt_engine_free(mEngine); }
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    /// Creates the engine; the error number, 0 on success.
    int32_t Create() { return vt_engine_new(&mEngine); }
    vt_engine* get() const { return mEngine; }

  private:
    vt_engine* mEngine = nullptr;
};

/// The catalogue, read once: its entries in index order.
struct Catalogue {
    std::vector<vt_OrbInfo> entries;
};

/// Reads the catalogue through an engine; the error number, 0 on success.
int32_t ReadCatalogue(vt_engine* engine, Catalogue& out);

/// The key of `value` in the engine's table of names `table` (VT_NAMES_MODE, _VIEW, _SIZE);
/// "" for a value the table does not name.
std::string NameKey(int32_t table, int32_t value);

/// A fixed clock for reproducible dot clouds (the value every reading returns).
void FixClock(int32_t ms);

}  // namespace vtcli
