#include "installer/private_file.h"

#include <odbcinst.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>

namespace installer {

namespace {

constexpr const char* kPathVariable = "ODBCINI";

}  // namespace

PrivateFile::PrivateFile() : descriptor_(memfd_create("private", MFD_CLOEXEC)) {}

PrivateFile::~PrivateFile() {
    if (descriptor_ >= 0) {
        close(descriptor_);
    }
}

std::string PrivateFile::path() const {
    return "/proc/self/fd/" + std::to_string(descriptor_);
}

bool PrivateFile::write(const std::string& text) const {
    std::string rest = text;
    off_t offset = 0;
    while (!rest.empty()) {
        const ssize_t count = pwrite(descriptor_, rest.data(), rest.size(), offset);
        if (count <= 0) {
            return false;
        }
        offset += count;
        rest.erase(0, static_cast<std::size_t>(count));
    }
    return ftruncate(descriptor_, offset) == 0;
}

bool PrivateFile::read(std::string& text) const {
    const off_t size = lseek(descriptor_, 0, SEEK_END);
    if (size < 0) {
        return false;
    }
    text.assign(static_cast<std::size_t>(size), '\0');
    return pread(descriptor_, text.data(), text.size(), 0) == size;
}

CopyForLibrary::CopyForLibrary(const std::string& path) : modeBefore_(ODBC_BOTH_DSN) {
    if (const char* before = std::getenv(kPathVariable)) {
        before_ = before;
    }
    SQLGetConfigMode(&modeBefore_);
    SQLSetConfigMode(ODBC_USER_DSN);
    setenv(kPathVariable, path.c_str(), 1);
}

CopyForLibrary::~CopyForLibrary() {
    if (before_) {
        setenv(kPathVariable, before_->c_str(), 1);
    } else {
        unsetenv(kPathVariable);
    }
    SQLSetConfigMode(modeBefore_);
}

}  // namespace installer
