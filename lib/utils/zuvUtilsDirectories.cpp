// Directory listings by scandir(), sorted by alphasort, with a name filter per operation.

#include <dirent.h>
#include <sys/stat.h>

#include <cstdlib>
#include <functional>
#include <memory>

#include "utils/zuvUtils.h"

namespace {
enum class Placement { front, back };

bool isDotEntry(const char* name) { return std::string(name) == "." || std::string(name) == ".."; }

int32_t listFiltered(std::string path, bool refuseLink, Placement placement,
                     const std::function<bool(const char*)>& keep, std::vector<std::string>& names) {
    if (path.empty() || path[0] != '/') path.insert(0, "/");
    if (refuseLink) {
        struct stat status {};
        if (lstat(path.c_str(), &status) == 0 && S_ISLNK(status.st_mode)) return 0;
    }
    struct dirent** entries = nullptr;
    const int count = scandir(path.c_str(), &entries, nullptr, alphasort);
    if (count < 0) return -1;
    // Each entry is freed once it is handled; the guard frees the rest and the array also
    // when adding a name throws.
    int remaining = count;
    auto release = [&remaining](struct dirent** all) {
        for (int i = 0; i < remaining; ++i) free(all[i]);
        free(all);
    };
    std::unique_ptr<struct dirent*, decltype(release)> guard(entries, release);
    // Walking against the sort order: inserting at the front leaves the names ascending,
    // appending leaves them descending.
    for (int i = count - 1; i >= 0; --i, --remaining) {
        if (keep(entries[i]->d_name)) {
            if (placement == Placement::front)
                names.insert(names.begin(), entries[i]->d_name);
            else
                names.emplace_back(entries[i]->d_name);
        }
        free(entries[i]);
    }
    return count;
}
}  // namespace

int32_t zuvUtils::listDirectory(const std::string& path, std::vector<std::string>& names) {
    return listFiltered(
        path, true, Placement::front, [](const char* name) { return !isDotEntry(name); }, names);
}

int32_t zuvUtils::listEntriesContainingIb(const std::string& path, std::vector<std::string>& names) {
    return listFiltered(
        path, true, Placement::front,
        [](const char* name) { return !isDotEntry(name) && std::string(name).find("ib") != std::string::npos; }, names);
}

int32_t zuvUtils::listEntriesStartingWithZeros(const std::string& path, std::vector<std::string>& names) {
    return listFiltered(
        path, true, Placement::front, [](const char* name) { return name[0] == '0' && name[1] == '0'; }, names);
}

int32_t zuvUtils::listEntriesWithPrefix(const std::string& path, const std::string& prefix,
                                        std::vector<std::string>& names) {
    return listFiltered(
        path, false, Placement::back,
        [&prefix](const char* name) {
            return !isDotEntry(name) && std::string(name).compare(0, prefix.size(), prefix) == 0;
        },
        names);
}
