// Writing through a temporary file in the target's folder, renamed over the target when complete.
#include "safe_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>

namespace vtcli {

namespace {

/// The system's reason for the last failure, e.g. "File too large".
std::string Reason(int error) { return std::strerror(error != 0 ? error : EIO); }

/// Runs the producer on an open stream and closes it; the errno of the first failure, or 0.
/// `gaveUp` tells a producer's own refusal from an I/O failure.
int Produce(std::FILE* file, const std::function<bool(std::FILE*)>& produce, bool& gaveUp) {
    errno = 0;
    gaveUp = !produce(file);
    int error = std::ferror(file) ? errno : 0;
    if (std::fflush(file) != 0 && error == 0) error = errno != 0 ? errno : EIO;
    return error;
}

/// A failed stream says why; a producer that gave up without one has said why itself.
WriteOutcome Failed(int error, bool gaveUp) {
    if (error != 0 || !gaveUp) return {false, Reason(error), ""};
    return {false, "", ""};
}

/// Writes straight into a target that is not a regular file; it is never removed.
WriteOutcome WriteInPlace(const std::string& path, const std::function<bool(std::FILE*)>& produce) {
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (file == nullptr) return {false, Reason(errno), ""};
    bool gaveUp = false;
    int error = Produce(file, produce, gaveUp);
    if (std::fclose(file) != 0 && error == 0) error = errno;
    if (gaveUp || error != 0) return Failed(error, gaveUp);
    return {true, "", ""};
}

}  // namespace

OutputFiles::~OutputFiles() {
    for (const Pending& p : mPending) ::unlink(p.temp.c_str());
}

WriteOutcome OutputFiles::Add(const std::string& path,
                              const std::function<bool(std::FILE*)>& produce) {
    WriteOutcome outcome = Stage(path, produce);
    outcome.path = path;
    return outcome;
}

WriteOutcome OutputFiles::Stage(const std::string& path,
                                const std::function<bool(std::FILE*)>& produce) {
    // A write beyond the file-size limit must fail with EFBIG, not end the process.
    std::signal(SIGXFSZ, SIG_IGN);
    if (path == "-") {
        bool gaveUp = false;
        const int error = Produce(stdout, produce, gaveUp);
        if (gaveUp || error != 0) return Failed(error, gaveUp);
        return {true, "", ""};
    }

    // The file that is really replaced: the target of a symlink, so the link stays a link.
    std::string target = path;
    struct stat st {};
    const bool exists = ::stat(path.c_str(), &st) == 0;
    if (exists && !S_ISREG(st.st_mode)) return WriteInPlace(path, produce);
    if (exists) {
        std::error_code ec;
        const std::filesystem::path real = std::filesystem::canonical(path, ec);
        if (ec) return {false, ec.message(), ""};
        target = real.string();
    }

    // A temporary name beside the target, renamed over it by Commit.
    const std::filesystem::path targetPath(target);
    std::filesystem::path folder = targetPath.parent_path();
    if (folder.empty()) folder = ".";
    std::string name = ".";
    name.append(targetPath.filename().string()).append(".XXXXXX");
    std::string temp = (folder / name).string();
    const int fd = ::mkstemp(temp.data());
    if (fd < 0) return {false, Reason(errno), ""};
    // The mode an existing file had, or what a new file gets under the umask.
    mode_t mode = st.st_mode & 07777;
    if (!exists) {
        const mode_t mask = ::umask(0);
        ::umask(mask);
        mode = 0666 & ~mask;
    }
    ::fchmod(fd, mode);

    std::FILE* file = ::fdopen(fd, "wb");
    if (file == nullptr) {
        const int error = errno;
        ::close(fd);
        ::unlink(temp.c_str());
        return {false, Reason(error), ""};
    }
    bool gaveUp = false;
    int error = Produce(file, produce, gaveUp);
    if (!gaveUp && error == 0 && ::fsync(fd) != 0) error = errno;
    if (std::fclose(file) != 0 && error == 0) error = errno != 0 ? errno : EIO;
    if (gaveUp || error != 0) {
        ::unlink(temp.c_str());
        return Failed(error, gaveUp);
    }
    mPending.push_back({temp, target, path});
    return {true, "", ""};
}

WriteOutcome OutputFiles::Commit() {
    WriteOutcome outcome{true, "", ""};
    for (const Pending& p : mPending) {
        if (outcome.ok && std::rename(p.temp.c_str(), p.target.c_str()) == 0) continue;
        // After a failed rename the rest are not replaced either.
        if (outcome.ok) outcome = {false, Reason(errno), p.path};
        ::unlink(p.temp.c_str());
    }
    mPending.clear();
    return outcome;
}

WriteOutcome WriteFileSafely(const std::string& path,
                             const std::function<bool(std::FILE*)>& produce) {
    OutputFiles files;
    if (WriteOutcome added = files.Add(path, produce); !added.ok) return added;
    return files.Commit();
}

bool SameOutput(const std::string& a, const std::string& b) {
    if (a == "-" || b == "-") return a == b;
    struct stat sa {
    }, sb{};
    if (::stat(a.c_str(), &sa) == 0 && ::stat(b.c_str(), &sb) == 0) {
        return sa.st_dev == sb.st_dev && sa.st_ino == sb.st_ino;
    }
    std::error_code ea, eb;
    const std::filesystem::path pa = std::filesystem::weakly_canonical(a, ea),
                                pb = std::filesystem::weakly_canonical(b, eb);
    if (ea || eb) return std::filesystem::absolute(a) == std::filesystem::absolute(b);
    return pa == pb;
}

int FinishStandardOutput(int rc) {
    // A write that failed earlier left its reason in errno unless a later call replaced it; only
    // a reason a write can have is believed.
    const int earlier = errno;
    int error = 0;
    if (std::fflush(stdout) != 0) {
        error = errno;
    } else if (std::ferror(stdout) != 0) {
        const bool writeReason = earlier == ENOSPC || earlier == EFBIG || earlier == EPIPE ||
                                 earlier == EDQUOT || earlier == EIO;
        error = writeReason ? earlier : EIO;
    } else {
        return rc;
    }
    std::fprintf(stderr, "veltara: cannot write standard output: %s\n", Reason(error).c_str());
    return 1;
}

WriteOutcome AddPng(OutputFiles& files, const std::string& path, const vtjson::RgbImage& image) {
    std::vector<uint8_t> bytes;
    if (std::string problem = vtjson::EncodePng(image, bytes); !problem.empty()) {
        return {false, problem, path};
    }
    return files.Add(path, [&](std::FILE* file) {
        return std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
    });
}

}  // namespace vtcli
