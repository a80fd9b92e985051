// Unpacking of gzip data.
#pragma once

#include <string>
#include <string_view>

namespace wavo::master {

/// Whether data begins as a gzip file does.
bool IsGzip(std::string_view data);

/// Unpacks a gzip file, of one member or several. Returns false when the data is damaged or ends
/// early; `*unpacked` then holds what could be read.
bool Gunzip(std::string_view data, std::string* unpacked);

}  // namespace wavo::master
