#pragma once
// Whole-file replacement of a small state file: the new content is written to a temporary
// twin in the same directory, flushed to storage and renamed over the file. A reader finds
// either the old file or the new one, never a mix, and never no file. The twin is cleared
// first, so that a twin left over from an interrupted rewrite doesn't end up in the result.

#include <functional>
#include <string>

// Replaces path with content through temporaryPath. False (errno set) if the twin can't be
// written or the rename fails: path then keeps its previous content, and the twin is gone.
bool zuvReplaceFileContent(const std::string& path, const std::string& temporaryPath, const std::string& content);

// The content of path with each line (line feed restored on every one) passed through
// edit. False if path can't be read.
bool zuvEditFileLines(const std::string& path, const std::function<std::string(const std::string&)>& edit,
                      std::string* content);
