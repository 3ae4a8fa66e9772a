#pragma once
// Test-side handle on the fake host tools (localcli, esxtop, vim-cmd): one script of this
// directory, fakeHostTool, that tells the tool by the name it is called under. It links the
// script into <fakeDir>/bin under each name, puts that directory first on PATH, points
// ZUV_FAKE_DIR at fakeDir, and writes the answers that the scripts give. Header-only, for
// any test binary: pass the tree's root (ZUV_SOURCE_DIR) to the constructor.

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace zuvsim {

class FakeHostTools {
public:
    FakeHostTools(const std::string& sourceDir, const std::string& fakeDir = "/tmp/zuvfake")
        : script(sourceDir + "/sim/hosttools/fakeHostTool"), dir(fakeDir) {
        makeDirectories(dir + "/bin");
        for (const char* tool : {"localcli", "esxtop", "vim-cmd"}) link(dir + "/bin/" + tool);
        const char* path = std::getenv("PATH");
        savedPath = path ? path : "";
        setenv("PATH", (dir + "/bin:" + savedPath).c_str(), 1);
        setenv("ZUV_FAKE_DIR", dir.c_str(), 1);
    }
    ~FakeHostTools() { setenv("PATH", savedPath.c_str(), 1); }
    FakeHostTools(const FakeHostTools&) = delete;
    FakeHostTools& operator=(const FakeHostTools&) = delete;

    // The key under which a tool finds its answer for an argument line.
    static std::string keyOf(const std::string& arguments) {
        std::string key = arguments;
        for (char& c : key) {
            const bool kept = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '.' ||
                              c == '_' || c == '-';
            if (!kept) c = '_';
        }
        return key;
    }

    // What `tool arguments` prints and how it exits. An empty err writes no .err file.
    void answer(const std::string& tool, const std::string& arguments, const std::string& out, int rc = 0,
                const std::string& err = "") {
        const std::string base = dir + "/" + tool + "/" + keyOf(arguments);
        makeDirectories(dir + "/" + tool);
        write(base + ".out", out);
        write(base + ".rc", std::to_string(rc) + "\n");
        if (err.empty()) {
            unlink((base + ".err").c_str());
        } else {
            write(base + ".err", err);
        }
    }
    // Fails without output: only an exit status.
    void fail(const std::string& tool, const std::string& arguments, int rc) {
        const std::string base = dir + "/" + tool + "/" + keyOf(arguments);
        makeDirectories(dir + "/" + tool);
        unlink((base + ".out").c_str());
        write(base + ".rc", std::to_string(rc) + "\n");
    }

    // Places tool in a directory as well (e.g. /bin for /bin/vim-cmd in a sandbox).
    void installIn(const std::string& directory, const std::string& tool) { link(directory + "/" + tool); }

    // The calls so far, one "tool arguments" line each, oldest first.
    std::vector<std::string> calls() const {
        std::vector<std::string> lines;
        std::ifstream in(dir + "/calls.log");
        for (std::string line; std::getline(in, line);) lines.push_back(line);
        return lines;
    }
    void clearCalls() { unlink((dir + "/calls.log").c_str()); }

    const std::string& directory() const { return dir; }

private:
    static void makeDirectories(const std::string& path) {
        for (size_t i = 1; i <= path.size(); ++i) {
            if (i != path.size() && path[i] != '/') continue;
            const std::string part = path.substr(0, i);
            if (mkdir(part.c_str(), 0755) != 0 && errno != EEXIST)
                throw std::runtime_error("mkdir " + part + ": " + std::strerror(errno));
        }
    }
    static void write(const std::string& path, const std::string& text) {
        std::ofstream out(path, std::ios::binary | std::ios::trunc);
        out << text;
        if (!out.good()) throw std::runtime_error("write " + path);
    }
    // The script at to; the last component of to names the tool.
    void link(const std::string& to) const {
        unlink(to.c_str());
        if (symlink(script.c_str(), to.c_str()) != 0)
            throw std::runtime_error("symlink " + to + ": " + std::strerror(errno));
    }

    std::string script;
    std::string dir;
    std::string savedPath;
};

}  // namespace zuvsim
