// Helpers shared by the test programs: temporary folders, file contents, captured output.
#pragma once

#include <string>

namespace nqtest {

// A fresh folder under the system's temporary folder, removed with all it holds when the
// object goes.
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir &) = delete;
    TempDir &operator=(const TempDir &) = delete;
    const std::string &path() const { return path_; }
    std::string file(const std::string &name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

std::string read_file(const std::string &path);
void write_file(const std::string &path, const std::string &content);
bool file_exists(const std::string &path);

// Everything written to standard output (or error) between start and stop, by any means.
class CaptureFd {
public:
    explicit CaptureFd(int fd);
    ~CaptureFd();
    std::string stop();

private:
    int fd_;
    int saved_ = -1;
    std::string file_;
    bool stopped_ = false;
};

}  // namespace nqtest
