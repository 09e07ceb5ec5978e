// Writing the output completely or not at all.
#include "app/OutputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iostream>

namespace {
void ReportFailure(const std::string& what, int error) {
    std::cerr << "nptests: cannot write " << what << ": "
              << (error != 0 ? std::strerror(error) : "write error") << "\n";
}

// Runs `write` on `out` and flushes it; the errno of the failure, or 0.
int WriteAndFlush(std::FILE* out, const std::function<bool(std::FILE*)>& write) {
    errno = 0;
    const bool written = write(out);
    int error = errno;
    if (!written) {
        return error != 0 ? error : EIO;
    }
    if (std::fflush(out) != 0 || std::ferror(out)) {
        error = errno;
        return error != 0 ? error : EIO;
    }
    return 0;
}

// The permissions a new file gets: 0666 less the process's umask.
mode_t NewFileMode() {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return static_cast<mode_t>(0666 & ~mask);
}

bool WriteDirectly(const std::string& path, const std::function<bool(std::FILE*)>& write) {
    std::FILE* out = std::fopen(path.c_str(), "wb");
    if (!out) {
        ReportFailure(path, errno);
        return false;
    }
    int error = WriteAndFlush(out, write);
    if (std::fclose(out) != 0 && error == 0) {
        error = errno != 0 ? errno : EIO;
    }
    if (error != 0) {
        ReportFailure(path, error);
        return false;
    }
    return true;
}

bool WriteReplacing(const std::string& path, const struct stat* existing,
                    const std::function<bool(std::FILE*)>& write) {
    namespace fs = std::filesystem;
    const fs::path target(path);
    const fs::path folder = target.has_parent_path() ? target.parent_path() : fs::path(".");
    std::string hidden = target.filename().string();
    hidden.insert(hidden.begin(), '.');
    hidden.append(".XXXXXX");
    std::string temporary = (folder / hidden).string();
    const int fd = ::mkstemp(temporary.data());
    if (fd < 0) {
        ReportFailure(path, errno);
        return false;
    }
    const mode_t mode = existing ? (existing->st_mode & 07777) : NewFileMode();
    std::FILE* out = ::fdopen(fd, "wb");
    if (!out) {
        const int error = errno;
        ::close(fd);
        ::unlink(temporary.c_str());
        ReportFailure(path, error);
        return false;
    }
    int error = WriteAndFlush(out, write);
    if (error == 0 && (::fchmod(fd, mode) != 0 || ::fsync(fd) != 0)) {
        error = errno;
    }
    if (std::fclose(out) != 0 && error == 0) {
        error = errno != 0 ? errno : EIO;
    }
    if (error == 0 && std::rename(temporary.c_str(), path.c_str()) != 0) {
        error = errno;
    }
    if (error != 0) {
        ::unlink(temporary.c_str());
        ReportFailure(path, error);
        return false;
    }
    return true;
}
} // namespace

bool WriteOutput(const std::string& path, const std::function<bool(std::FILE*)>& write) {
    if (path.empty()) {
        const int error = WriteAndFlush(stdout, write);
        if (error != 0) {
            ReportFailure("to standard output", error);
            return false;
        }
        return true;
    }
    struct stat status {};
    if (::stat(path.c_str(), &status) == 0) {
        if (S_ISDIR(status.st_mode)) {
            ReportFailure(path, EISDIR);
            return false;
        }
        if (!S_ISREG(status.st_mode)) {
            return WriteDirectly(path, write);
        }
        // The file is replaced, not written through: a file that cannot be
        // written is not to be replaced either.
        if (::access(path.c_str(), W_OK) != 0) {
            ReportFailure(path, errno);
            return false;
        }
        return WriteReplacing(path, &status, write);
    }
    return WriteReplacing(path, nullptr, write);
}

bool IsSameFile(const std::string& output, const std::string& input) {
    std::error_code ec;
    return !output.empty() && !input.empty() && std::filesystem::equivalent(output, input, ec) &&
           !ec;
}
