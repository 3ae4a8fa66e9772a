// Fibre Channel adapters: VMkernel name -> PCI address, and fabric node name -> adapter, from
// the host's listings; and the PCI text of a storage adapter.

#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "log/zuvLogger.h"
#include "utils/zuvCommandPipe.h"
#include "utils/zuvScratchFile.h"
#include "utils/zuvShellWord.h"
#include "utils/zuvUtils.h"
#include "utils/zuvUtilsLogTag.h"
#include "vmware/zuvVMwareOSUtils.h"

std::map<std::string, zuvFcTopologyEntry> zuvUtils::fcTopologyMap;
std::map<std::string, std::string> zuvUtils::fcNameMap;

namespace {
const char* const kNotAvailable = "NotAvailable";
constexpr int kAdapterReadSize = 512;

std::string scratchPath(const char* name) { return zuvVMwareOSUtils().getInstallPath() + "/tmp/" + name; }

// The text two characters behind the first ":" (behind the label and its blank). A line
// that ends at that colon has no such text: its value is empty.
std::string valueAfterFirstColon(const std::string& line) {
    const size_t colon = line.find(':');
    if (colon == std::string::npos || colon + 2 > line.size()) return "";
    return line.substr(colon + 2);
}

bool contains(const std::string& line, const char* text) { return line.find(text) != std::string::npos; }

// Runs command >> the scratch file and opens it for reading; false when any step fails.
bool runIntoScratch(const std::string& command, zuvScratchFile& scratch, std::ifstream& in) {
    if (!scratch.prepare()) return false;
    if (system((command + scratch.path()).c_str()) != 0) return false;
    in.open(scratch.path());
    return in.is_open();
}
}  // namespace

void zuvUtils::collectFcTopology() {
    zuvScratchFile scratch(scratchPath("fc_topology.txt"));
    std::ifstream in;
    if (!runIntoScratch("localcli hardware pci list | grep -e 'Address: ' -e 'VMkernel Name:'>> ", scratch, in)) {
        ZUV_LOG_ERROR(kUtilsLogTag, "Error occurred in gathering FC topology information.");
        return;
    }
    std::string address, name;
    bool stored = false;
    size_t number = 0;
    for (std::string line; std::getline(in, line);) {
        if (++number == 1 && !contains(line, "Address: ")) {
            ZUV_LOG_DEBUG(kUtilsLogTag, "Unable to find FC topology information.");
            break;
        }
        if (stored) {
            address.clear();
            name.clear();
        }
        if (contains(line, "Address: ")) address = valueAfterFirstColon(line);
        if (contains(line, "VMkernel Name:")) {
            const size_t blankV = line.find(" v");
            if (blankV != std::string::npos) name = line.substr(blankV + 1);
        }
        if (address.empty() || name.empty()) {
            stored = false;
            continue;
        }
        fcTopologyMap[name] = zuvFcTopologyEntry{address, name};
        stored = true;
    }
    in.close();
    scratch.remove();
    printFcTopologyMap();
}

void zuvUtils::collectFcNames() {
    zuvScratchFile scratch(scratchPath("fc_name.txt"));
    std::ifstream in;
    if (!runIntoScratch("localcli storage san fc list | grep -e 'Adapter: ' -e 'Node Name:'>> ", scratch, in)) {
        ZUV_LOG_ERROR(kUtilsLogTag, "Error occurred in gathering localcli storage SAN information");
        return;
    }
    std::string adapter, nodeName;
    bool stored = false;
    size_t number = 0;
    for (std::string line; std::getline(in, line);) {
        if (++number == 1 && !contains(line, "Adapter: ")) {
            ZUV_LOG_DEBUG(kUtilsLogTag, "Unable to find localcli storage SAN information.");
            break;
        }
        if (stored) {
            adapter.clear();
            nodeName.clear();
        }
        if (contains(line, "Adapter: ")) adapter = valueAfterFirstColon(line);
        if (contains(line, "Node Name:")) nodeName = valueAfterFirstColon(line);
        // An adapter the topology doesn't know keeps both strings: a following node name
        // line is tested with the same adapter.
        if (adapter.empty() || nodeName.empty() || !isFcTopologyName(adapter)) {
            stored = false;
            continue;
        }
        fcNameMap[nodeName] = adapter;
        stored = true;
    }
    in.close();
    scratch.remove();
    printFcNameMap();
}

bool zuvUtils::isFcTopologyName(const std::string& name) {
    return !fcTopologyMap.empty() && fcTopologyMap.count(name) != 0;
}

zuvFcTopologyEntry zuvUtils::getFcTopologyEntry(const std::string& name) {
    const auto found = fcTopologyMap.find(name);
    if (found == fcTopologyMap.end()) return zuvFcTopologyEntry{kNotAvailable, kNotAvailable};
    return found->second;
}

std::string zuvUtils::getFcPciAddress(const std::string& name) { return getFcTopologyEntry(name).pciAddress; }

std::vector<std::string> zuvUtils::getFcLocationFields(const std::string& name) {
    const std::string location = getFcTopologyEntry(name).location;
    if (location == kNotAvailable) return {};
    const size_t s = location.find('s');
    return {extractBetween("r", "i", location), extractBetween("i", "s", location),
            s == std::string::npos ? location : location.substr(s + 1)};
}

std::string zuvUtils::getFcAdapterForNodeName(const std::string& nodeName) {
    const auto found = fcNameMap.find(nodeName);
    return found == fcNameMap.end() ? kNotAvailable : found->second;
}

void zuvUtils::printFcTopologyMap() {
    ZUV_LOG_DEBUG(kUtilsLogTag, "-----Printing FcGEoID PCIe location map-----");
    for (const auto& entry : fcTopologyMap)
        ZUV_LOG_DEBUG(kUtilsLogTag, "%s       %s        %s", entry.first.c_str(), entry.second.pciAddress.c_str(),
                      entry.second.location.c_str());
}

void zuvUtils::printFcNameMap() {
    ZUV_LOG_DEBUG(kUtilsLogTag, "-----Printing FcNameMap-----");
    for (const auto& entry : fcNameMap)
        ZUV_LOG_DEBUG(kUtilsLogTag, "%s       %s", entry.first.c_str(), entry.second.c_str());
}

int zuvUtils::getAdapterPciString(const std::string& adapter, std::string& pciString) {
    std::string word;
    if (!zuvShellQuote(adapter, &word)) {
        ZUV_LOG_WARNING(kUtilsLogTag, "Refusing adapter name with a quote, a control character or a leading '-': [%s]",
                        adapter.c_str());
        return -1;
    }
    const zuvCommandPipe stream = zuvOpenCommand("localcli storage core adapter list | grep -i " + word);
    if (!stream) {
        ZUV_LOG_ERROR(kUtilsLogTag, "Error occurred in identifying PCI string.");
        return -1;
    }
    const std::string output = zuvReadJoined(stream.get(), kAdapterReadSize);
    const size_t open = output.find('(');
    const size_t close = output.find(')');
    if (open != std::string::npos && close != std::string::npos) {
        // A ")" before the first "(" gives the text from the "(" on, as substr does it.
        pciString = close > open ? output.substr(open + 1, close - open - 1) : output.substr(open + 1);
    }
    return 1;
}
