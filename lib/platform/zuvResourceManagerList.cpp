#include "platform/zuvResourceManagerList.h"

namespace {

bool holds(const std::string& text, const char* part) { return text.find(part) != std::string::npos; }

}  // namespace

std::vector<int32_t> zuvResourceManagersForKernel(const std::string& kernelLine) {
    std::vector<int32_t> ids;
    if (holds(kernelLine, "Linux")) ids.insert(ids.end(), {6, 99, 8});
    if (holds(kernelLine, "Windows")) ids.push_back(8);
    if (holds(kernelLine, "VMkernel") && (holds(kernelLine, "9.0") || holds(kernelLine, "8.0"))) ids.push_back(8);
    ids.insert(ids.end(), {1, 0, 2, 3, 4, 5});
    return ids;
}
