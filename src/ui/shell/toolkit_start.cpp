#include "ui/shell/toolkit_start.h"

#include <QtGlobal>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace wavo {

namespace {

constexpr int kNoDisplay = 1;

struct Said {
    QtMsgType type;
    std::string category;
    QString text;
};

// A handler of messages is a plain function.
QtMessageHandler g_before = nullptr;
std::vector<Said> g_held;  // NOLINT(cert-err58-cpp): empty
std::string g_fault;       // NOLINT(cert-err58-cpp): empty
bool g_holds_back = false;

void OnMessage(QtMsgType type, const QMessageLogContext& context, const QString& text) {
    if (type == QtFatalMsg) {
        std::fprintf(stderr, "%s\n", g_fault.c_str());
        std::fflush(stderr);
        std::_Exit(kNoDisplay);  // returning would abort
    }
    if (g_holds_back) {
        g_held.push_back({type, context.category == nullptr ? "" : context.category, text});
    } else {
        g_before(type, context, text);
    }
}

QString AskedPlatform(const std::vector<std::string>& arguments) {
    QString platform = qEnvironmentVariable("QT_QPA_PLATFORM");
    for (std::size_t index = 0; index + 1 < arguments.size(); ++index) {
        if (arguments[index] == "-platform" || arguments[index] == "--platform") {
            platform = QString::fromStdString(arguments[index + 1]);
        }
    }
    return platform;
}

}  // namespace

QString StartFault(const QString& platform, const QString& display,
                   const QString& wayland_display) {
    const bool needs_display = platform.isEmpty() || platform.startsWith(QLatin1String("xcb")) ||
                               platform.startsWith(QLatin1String("wayland"));
    if (!needs_display) {
        return QStringLiteral("wavo: no window system: cannot use \"%1\"").arg(platform);
    }
    const QString& named = display.isEmpty() ? wayland_display : display;
    return named.isEmpty()
               ? QStringLiteral("wavo: no display: neither DISPLAY nor WAYLAND_DISPLAY is set")
               : QStringLiteral("wavo: no display: cannot use \"%1\"").arg(named);
}

ToolkitStart::ToolkitStart(const std::vector<std::string>& arguments) {
    g_fault = StartFault(AskedPlatform(arguments), qEnvironmentVariable("DISPLAY"),
                         qEnvironmentVariable("WAYLAND_DISPLAY"))
                  .toStdString();
    g_holds_back = !qEnvironmentVariableIsSet("QT_DEBUG_PLUGINS");
    g_before = qInstallMessageHandler(&OnMessage);
}

ToolkitStart::~ToolkitStart() {
    qInstallMessageHandler(g_before);
    for (const Said& said : std::exchange(g_held, {})) {
        g_before(said.type, QMessageLogContext(nullptr, 0, nullptr, said.category.c_str()),
                 said.text);
    }
}

}  // namespace wavo
