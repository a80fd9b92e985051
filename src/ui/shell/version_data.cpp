#include "ui/shell/version_data.h"

#include <QSettings>

#include "platform/folders.h"
#include "platform/version_resource.h"
#include "support/mini_data.h"

namespace wavo {

VersionData OwnVersion() {
    if (const auto resource = platform::OwnVersionResource()) {
        return {resource->product_name, resource->product_version, resource->file_version,
                resource->file_description, resource->legal_copyright};
    }
    return {"Wavo", WAVO_VERSION, WAVO_FILE_VERSION, WAVO_DESCRIPTION, WAVO_COPYRIGHT};
}

std::string InstallRoot() {
    const QSettings settings(QSettings::SystemScope, QStringLiteral("Velk machine tools"),
                             QStringLiteral("Installation"));
    return settings.value(QStringLiteral("root")).toString().toStdString();
}

std::string ReadServicePack(const std::string& root) {
    std::string service_pack;
    MIniData file;
    if (!root.empty() && file.Open(root + platform::PathSeparator() + "version_sr.txt")) {
        file.GetStringEntry("Version", "ServicePack", service_pack);
    }
    return service_pack;
}

std::string AboutText(const VersionData& version, const std::string& service_pack) {
    std::string text = version.product_name + " " + version.product_version;
    if (!service_pack.empty()) {
        text += " SP " + service_pack;
    }
    return text + "\n" + version.file_version + " " + version.file_description + "\n" +
           version.copyright;
}

}  // namespace wavo
