// Standard folders. All paths are UTF-8.
#pragma once

#include <string>

namespace wavo::platform {

/// What joins folder and file names on this system: "/" or "\".
std::string PathSeparator();

/// A path from the command line in this system's form: "/" becomes "\" where that separates
/// folders; elsewhere nothing changes.
std::string NativePath(std::string path);

/// The data folder of the product (maker folder `Velk`), without a separator at the end; created
/// when missing. Linux: $XDG_DATA_HOME/Velk, else ~/.local/share/Velk. Windows: Velk in
/// the common application data folder, where all users share what is in it, or in the folder that
/// WAVO_DATA_HOME names with drive or server. Empty on failure; LastError() tells why.
std::string DataFolder();

/// The folder for logs, created when missing. Linux: $XDG_STATE_HOME/Velk, else
/// ~/.local/state/Velk. Windows: the folder `logs` in the data folder. Empty on failure.
std::string StateFolder();

/// The folder for large files that only a running program needs, created when missing; of this user
/// alone. Linux: $XDG_CACHE_HOME/Velk, else ~/.cache/Velk. Windows: Velk in the user's local
/// application data folder, or the folder `cache` in the data folder where WAVO_DATA_HOME names
/// that. Empty on failure.
std::string CacheFolder();

/// Whether the process' standard error is a terminal that a person reads.
bool StandardErrorIsTerminal() noexcept;

/// Whether the process has a standard output and a standard error at all. Windows: a program with
/// windows has none, unless it was started with one.
bool HasStandardOutput() noexcept;
bool HasStandardError() noexcept;

/// Windows: writes to the console of the program that started this one, which a program with
/// windows has no stream to, on a new line: the console does not wait, and its prompt stands in the
/// old one. False when there is none, which is so on every other system.
bool WriteToConsoleOfStarter(const std::string& text) noexcept;

/// Lets the terminal of the process, if there is one, understand control sequences and UTF-8.
/// Terminals of POSIX systems do; on Windows they have to be told.
void PrepareTerminal() noexcept;

}  // namespace wavo::platform
