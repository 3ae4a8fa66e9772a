#pragma once
// A scratch file at a fixed path that a shell command fills with ">>" and the caller reads
// once. The paths live in shared directories, so whatever stands at the name beforehand (a
// file left by a killed process, or a symbolic link planted there) is removed, and a fresh
// file is created exclusively, without following links, before the shell appends to it. The
// shell then always writes into a file of this process, never through a link. The object
// removes the path again on every way out, exceptions included.

#include <string>

class zuvScratchFile {
public:
    explicit zuvScratchFile(std::string path);
    ~zuvScratchFile();
    zuvScratchFile(const zuvScratchFile&) = delete;
    zuvScratchFile& operator=(const zuvScratchFile&) = delete;

    // Clears the name and creates the empty file (mode 0600). False, with errno set, when the
    // name can't be cleared or the file can't be created.
    bool prepare();
    // Removes the file now (also done by the destructor).
    void remove();
    const std::string& path() const { return filePath; }

private:
    std::string filePath;
};
