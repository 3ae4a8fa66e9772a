#pragma once
// Values from a caller placed into a shell command line. Every such value goes through here:
// it becomes one single-quoted word, inside which the shell expands nothing. A value that
// could end the word or the line (a single quote, a control character such as a line feed)
// or that a tool would read as an option (a leading "-") is refused instead.

#include <string>

// word = the value between single quotes; false (word untouched) for a refused value.
bool zuvShellQuote(const std::string& value, std::string* word);
