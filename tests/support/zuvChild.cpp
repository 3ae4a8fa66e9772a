#include "zuvChild.h"

#include "zuvSandbox.h"

#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>

namespace zuvtest {

ChildResult inChild(const std::function<std::string()>& body) {
    int channel[2];
    if (pipe(channel) != 0) throw std::runtime_error("pipe");
    const pid_t child = forkQuietly();
    if (child < 0) throw std::runtime_error("fork");
    if (child == 0) {
        close(channel[0]);
        std::string text;
        try {
            text = body();
        } catch (const std::exception& e) {
            text = std::string("exception: ") + e.what();
        }
        size_t done = 0;
        while (done < text.size()) {
            const ssize_t n = write(channel[1], text.data() + done, text.size() - done);
            if (n <= 0) break;
            done += static_cast<size_t>(n);
        }
        _exit(0);
    }
    close(channel[1]);
    ChildResult result;
    char buffer[4096];
    ssize_t n;
    while ((n = read(channel[0], buffer, sizeof buffer)) > 0) result.text.append(buffer, n);
    close(channel[0]);
    int raw = 0;
    waitpid(child, &raw, 0);
    result.exitStatus = WIFEXITED(raw) ? WEXITSTATUS(raw) : 128 + WTERMSIG(raw);
    return result;
}

}  // namespace zuvtest
