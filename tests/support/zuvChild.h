#pragma once
// Runs a piece of a test in a forked child: for singletons built once per process, and exit().

#include <functional>
#include <string>

namespace zuvtest {

struct ChildResult {
    std::string text;     // what the function returned
    int exitStatus = -1;  // 0 when the function returned; else the child's own exit status
};
ChildResult inChild(const std::function<std::string()>& body);

}  // namespace zuvtest
