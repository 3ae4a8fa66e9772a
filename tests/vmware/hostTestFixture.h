#pragma once
// One fixture for the host utilities and the VMware host layer: a fake host, the fake host tools
// first on PATH, a stopped clock, a /bin/sh that records its command lines, the log read back as
// "LEVEL TAG: message", tables of cases written a row a line, and the operations run by name.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <functional>
#include <sstream>

#include "fakeHostSystem.h"
#include "sim/hosttools/zuvFakeHostTools.h"
#include "utils/zuvUtils.h"
#include "vmware/zuvVMwareOSUtils.h"
#include "zuvProcess.h"
#include "zuvSandbox.h"
#include "zuvTestLog.h"

using Lines = std::vector<std::string>;
constexpr time_t kTestNow = 1700000000;
inline time_t fixedNow = 0;  // the product's clock (the tests link with --wrap=time); 0: the real one
extern "C" time_t __real_time(time_t*);
extern "C" inline __attribute__((used)) time_t __wrap_time(time_t* out) {
    const time_t now = fixedNow != 0 ? fixedNow : __real_time(nullptr);
    return out != nullptr ? (*out = now) : now;
}

// Rows a line, cells parted by " | " ("" is an empty cell; \n and \t stand for their characters). A line indented
// by four blanks carries on the row above: "    | cell" adds cells, "    text" goes on with its last cell.
inline std::vector<Lines> table(const std::string& text, const std::string& separator = " | ") {
    std::vector<Lines> rows;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        if (line.empty()) continue;
        const bool more = line.rfind("    ", 0) == 0;
        if (!more) rows.emplace_back();
        line.erase(0, more ? 4 : 0);
        const bool sameCell = more && line.rfind(separator.substr(1), 0) != 0;
        line.erase(0, more && !sameCell ? separator.size() - 1 : 0);
        for (size_t at = 0, end = 0; end != std::string::npos; at = end + separator.size()) {
            std::string cell = line.substr(at, (end = line.find(separator, at)) - at);
            for (const auto& [from, to] : {std::pair{"\\n", "\n"}, {"\\t", "\t"}})
                for (size_t n; (n = cell.find(from)) != std::string::npos;) cell.replace(n, 2, to);
            if (sameCell && at == 0)
                rows.back().back() += cell;
            else
                rows.back().push_back(cell == "\"\"" ? "" : cell);
        }
    }
    return rows;
}
// The parts joined in the order written: a braced list is evaluated from left to right.
inline std::string join(const std::vector<std::string>& parts, const std::string& separator = ",") {
    std::string text;
    for (const std::string& part : parts) text += (&part == &parts.front() ? "" : separator) + part;
    return text;
}
// The call's result, or "!" and the text of the exception that it threw instead.
inline std::string orThrown(const std::function<std::string()>& call) {
    try {
        return call();
    } catch (const std::exception& e) {
        return std::string("!") + e.what();
    }
}
inline Lines linesOf(const std::string& path) {
    Lines lines;
    std::ifstream in(path);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

class HostTest : public ::testing::Test {
protected:
    void SetUp() override {
        fixedNow = kTestNow;
        setenv("TZ", "UTC0", 1), tzset();
        zuvtest::startFileLogging(), zuvtest::clearLogs();
        unlink("/bin/sh");  // a link to the machine's shell: never written through
        zuvtest::writeFile("/bin/sh",
                           "#!/usr/bin/sh\n[ \"$1\" = -c ] && printf '%s\\n' \"$2\" >> /tmp/shell.log\n"
                           "exec /usr/bin/sh \"$@\"\n");
        chmod("/bin/sh", 0755), unlink("/tmp/shell.log"), zuvtest::makeDirectories("/opt/kelzuv/tmp");
        zuvUtils::fcTopologyMap.clear(), zuvUtils::fcNameMap.clear(), zuvUtils::geoIdLocationMap.clear();
        zuvUtils::osVersion.clear(), zuvUtils::osName.clear();
        zuvUtils::primaryIPv4Address.clear(), zuvUtils::auxIPv4Address.clear();
    }
    void TearDown() override {
        unlink("/bin/sh"), symlink("/usr/bin/sh", "/bin/sh");
        for (const std::string& tool : replaced) unlink((tools.directory() + "/bin/" + tool).c_str());
    }
    void replaceTool(const std::string& tool, const std::string& script) {  // first on PATH for this test
        const std::string path = tools.directory() + "/bin/" + tool;
        unlink(path.c_str());  // may link to the fake tool of the tree: never written through
        zuvtest::writeFile(path, "#!/bin/sh\n" + script + "\n"), chmod(path.c_str(), 0755), replaced.push_back(tool);
    }
    static Lines logged() {  // the main file's lines, then the debug file's
        Lines found;
        for (const char* file : {zuvtest::kMainLog, zuvtest::kDebugLog}) {
            for (const std::string& line : linesOf(file)) {
                std::istringstream fields(line);
                std::string stamp, level, thread, number, rest;
                std::getline(fields >> stamp >> level >> thread >> number >> std::ws, rest);
                found.push_back(level.substr(1, level.size() - 2) + " " + rest);
            }
        }
        return found;
    }
    static bool saw(const std::string& line) { return zuvtest::hasMessage(logged(), line); }
    // The result against the row's cell `at`; the cells behind it are lines that must have been
    // logged ("!line": must not have been).
    static void check(const Lines& row, const std::string& result, size_t at = 1) {
        EXPECT_EQ(result, row[at]) << row[0];
        for (size_t i = at + 1; i < row.size(); ++i)
            EXPECT_EQ(saw(row[i].substr(row[i][0] == '!')), row[i][0] != '!') << row[0] << ": " << row[i];
    }
    // The result of an operation as text.
    std::string run(const std::string& op) {
        std::string pci = "kept";
        time_t a = 7, b = 7;
        const auto ids = [](const std::pair<std::string, std::string>& p) { return p.first + "," + p.second; };
        const auto figures = [](const std::vector<double>& m) {
            return m.empty() ? std::string("none") : std::to_string(int(m[0])) + "," + std::to_string(int(m[1]));
        };
        if (op == "memory") return figures(os.getMemoryFigures());
        if (op == "version") return join({utils.getOSVersion(), utils.getOSName()});
        if (op == "vmVersion") return join({os.getOSVersion(), os.getOSProduct()});
        if (op == "topology") return utils.collectFcTopology(), utils.getFcPciAddress("vmhba1");
        if (op == "names") return utils.collectFcNames(), utils.getFcAdapterForNodeName("20:01");
        if (op.rfind("adapter", 0) == 0)  // "adapter:<name>", vmhba1 without one
            return join({std::to_string(utils.getAdapterPciString(op.size() > 8 ? op.substr(8) : "vmhba1", pci)), pci});
        if (op == "boot") return join({std::to_string(utils.getBootTimes(&a, &b)), std::to_string(a - b)});
        if (op == "shutdown") return join({std::to_string(utils.getLastShutdownTime(&a)), std::to_string(a)});
        if (op.rfind("ids", 0) == 0) {  // "ids:<key>", 0000:3b:00.0 without one
            const std::string key = op.size() > 4 ? op.substr(4) : "0000:3b:00.0";
            return join({ids(os.getPciIds(key)), ids(os.getPciSubIds(key))});
        }
        if (op == "sync") return utils.syncPersistentStorage(), os.syncPersistentStorage(), "";
        if (op == "runners") return join({join(utils.runCommand("echo x"), ""), join(os.runCommand("echo x"), "")});
        if (op == "runOrThrow") return join(os.runCommandOrThrow("echo x"), "");
        throw std::logic_error("no operation " + op);
    }

    vmwaretest::FakeHostSystem host;
    zuvsim::FakeHostTools tools{ZUV_SOURCE_DIR};
    zuvUtils utils;
    zuvVMwareOSUtils os;
    Lines replaced;
};
