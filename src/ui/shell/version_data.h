// What the program knows about its own version.
#pragma once

#include <string>

namespace wavo {

struct VersionData {
    std::string product_name;
    std::string product_version;
    std::string file_version;
    std::string file_description;
    std::string copyright;
};

/// The data of this program: from the version resource of its file, where there is one, else what
/// it was built with.
VersionData OwnVersion();

/// The folder that the product was installed to, from the machine-wide settings "Velk machine
/// tools", product "Installation", value "root"; empty when it is not known.
std::string InstallRoot();

/// The service pack of the product in the folder `root`: section "Version", entry "ServicePack" of
/// its file "version_sr.txt"; empty when there is none.
std::string ReadServicePack(const std::string& root);

/// The text of the about box: three lines.
std::string AboutText(const VersionData& version, const std::string& service_pack);

}  // namespace wavo
