#include "cliFixture.h"

#include <dirent.h>
#include <unistd.h>

#include <cstdio>
#include <sstream>

const char* const kFullModeConfig =
    R"({"CliMode":"full","EnableResources":["HostOSInfo","FibreChannelDevices"],"LoggingLevel":"Warning"})";
const char* const kTestModeConfig = R"({"CliMode":"test","LoggingLevel":"Warning"})";

namespace {
const char* const kRecord = "/tmp/service-record.txt";
}

void CliFixture::SetUp() {
    zuvtest::writeConfig(kFullModeConfig);
    unlink(kRecord);
    unlink("/var/run/kelzuv");
}

void CliFixture::TearDown() {
    service.stop();
    unlink("/var/run/kelzuv");
    for (const std::string& pipe : replyPipesLeft()) unlink(pipe.c_str());
}

void CliFixture::startService(const std::vector<std::string>& options) {
    std::vector<std::string> argv{ZUV_SIM_SERVICE_PATH, "--record", kRecord};
    argv.insert(argv.end(), options.begin(), options.end());
    service.start(argv);
    ASSERT_TRUE(zuvtest::waitForPath("/var/run/kelzuv")) << "the simulated service made no pipe";
}

zuvtest::ProcessResult CliFixture::cli(const std::vector<std::string>& args, int timeoutMs) {
    std::vector<std::string> argv{ZUV_CLI_PATH};
    argv.insert(argv.end(), args.begin(), args.end());
    return zuvtest::runProcess(argv, timeoutMs);
}

std::vector<std::vector<uint8_t>> CliFixture::packets() {
    std::vector<std::vector<uint8_t>> all;
    if (!zuvtest::fileExists(kRecord)) return all;
    std::istringstream lines(zuvtest::readFile(kRecord));
    std::string line;
    while (std::getline(lines, line)) {
        std::istringstream words(line);
        std::string word;
        words >> word;  // "packet"
        std::vector<uint8_t> bytes;
        while (words >> word) bytes.push_back(static_cast<uint8_t>(std::stoul(word, nullptr, 16)));
        all.push_back(bytes);
    }
    return all;
}

std::vector<std::string> CliFixture::payloads() {
    std::vector<std::string> texts;
    for (const auto& packet : packets()) texts.emplace_back(packet.begin() + 17, packet.end());
    return texts;
}

std::vector<std::string> CliFixture::replyPipesLeft() {
    std::vector<std::string> left;
    DIR* dir = opendir("/var/run");
    if (!dir) return left;
    while (dirent* entry = readdir(dir)) {
        const std::string name = entry->d_name;
        if (name.rfind("kelzuvcli", 0) == 0) left.push_back("/var/run/" + name);
    }
    closedir(dir);
    return left;
}

uint16_t messageTypeOf(const std::vector<uint8_t>& packet) {
    return static_cast<uint16_t>(packet.at(3) | packet.at(4) << 8);
}

uint32_t u32At(const std::vector<uint8_t>& packet, size_t offset) {
    return packet.at(offset) | packet.at(offset + 1) << 8 | packet.at(offset + 2) << 16 |
           static_cast<uint32_t>(packet.at(offset + 3)) << 24;
}
