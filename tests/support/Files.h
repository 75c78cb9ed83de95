#pragma once

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <stdexcept>
#include <stdlib.h>
#include <string>
#include <string_view>

namespace mervo::test {

/// A folder of its own, gone with everything in it at the end of the scope.
class TempDir {
public:
    explicit TempDir(const std::filesystem::path& above = std::filesystem::temp_directory_path())
    {
        std::string name = (above / "mervo-test-XXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr)
            throw std::runtime_error("no temporary folder: " + name);
        path_ = name;
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    ~TempDir()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    const std::filesystem::path& path() const { return path_; }
    std::string string() const { return path_.string(); }
    friend std::filesystem::path operator/(const TempDir& dir, std::string_view name) { return dir.path_ / name; }

private:
    std::filesystem::path path_;
};

/// For folders in memory, where writing takes no time and so more happens at once; where there is no such place, any.
inline std::filesystem::path memory()
{
    return std::filesystem::is_directory("/dev/shm") ? "/dev/shm" : std::filesystem::temp_directory_path();
}

/// Writes a whole file, with the folders above it.
inline void writeFile(const std::filesystem::path& file, std::string_view bytes)
{
    std::filesystem::create_directories(file.parent_path());
    std::ofstream stream(file, std::ios::binary | std::ios::trunc);
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!stream.flush())
        throw std::runtime_error("cannot write " + file.string());
}

/// Writes a script that can be run.
inline void writeProgram(const std::filesystem::path& file, std::string_view text)
{
    writeFile(file, text);
    std::filesystem::permissions(file, std::filesystem::perms::owner_all);
}

/// The bytes of a file; throws when it cannot be read.
inline std::string readFile(const std::filesystem::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    if (!stream)
        throw std::runtime_error("cannot read " + file.string());
    std::ostringstream bytes;
    bytes << stream.rdbuf();
    return bytes.str();
}

/// The paths of everything below a folder, relative to it; empty when it is not there.
inline std::set<std::string> tree(const std::filesystem::path& folder)
{
    std::set<std::string> names;
    if (std::filesystem::exists(folder)) {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
            names.insert(std::filesystem::relative(entry.path(), folder).string());
    }
    return names;
}

} // namespace mervo::test
