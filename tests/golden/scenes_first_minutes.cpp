// The pictures of the manual for the first minutes: the page without graphs, and a machine that
// runs.
#include <QTemporaryDir>
#include <cmath>
#include <memory>

#include "fake_shared_memory.h"
#include "golden/scenes_recording.h"
#include "lines_from_memory.h"
#include "real_prompts.h"
#include "system_facts.h"
#include "ui/shell/first_page.h"
#include "ui/shell/first_start.h"
#include "ui/shell/looks.h"
#include "ui/shell/main_frame.h"
#include "view/wavo_view.h"

namespace wavo::testing {

namespace {

constexpr QSize kWindow(1100, 700);
constexpr int kSecondsSeen = 9;
constexpr int kLinesPerSecond = 250;

/// A place for the program's files as long as it stands.
class OwnFolder {
 public:
    OwnFolder() {
        ApplyLook(FindLook(static_cast<int>(kDefaultLook)));
        ResetFakeSharedMemory();
        qputenv(kDataHome, m_folder.path().toLocal8Bit());
    }
    ~OwnFolder() { qunsetenv(kDataHome); }
    OwnFolder(const OwnFolder&) = delete;
    OwnFolder& operator=(const OwnFolder&) = delete;

 private:
    const QTemporaryDir m_folder;
};

QImage FirstStartPage() {
    const OwnFolder folder;
    const Prompts prompts = RealPrompts();
    CMainFrame frame(prompts);
    frame.resize(kWindow);
    frame.show();
    frame.View().OnInitialUpdate();
    const FirstStart first(frame, prompts, {"demo_master", "circle.csv", "circle.ini"}, true);
    // It takes its place, and then the size that it has there.
    QCoreApplication::processEvents();
    QCoreApplication::processEvents();
    return frame.grab().toImage();
}

/// A second of a circle of 50 mm at 3000 mm/min.
void GiveSecond(LinesFromMemory& source, int second) {
    constexpr double kRadius = 50.0;
    source.values.clear();
    for (int line = 0; line < kLinesPerSecond; ++line) {
        const double angle = second + static_cast<double>(line) / kLinesPerSecond;
        for (const double value : {kRadius * std::cos(angle), kRadius * std::sin(angle)}) {
            source.values.push_back(std::round(value * 1e6) / 1e6);
        }
    }
    (void)source.events->BatchReady();
}

QImage Live() {
    const OwnFolder folder;
    const Prompts prompts = RealPrompts();
    auto made = std::make_unique<LinesFromMemory>();
    LinesFromMemory& source = *made;
    source.text = "Connected to the master process (Dorvane)";
    CMainFrame frame(prompts, nullptr, std::move(made));
    frame.resize(kWindow);
    frame.show();
    frame.View().OnInitialUpdate(WAVO_GRAPHS "/circle.ini");
    frame.View().Screen().ShowEditor(false);
    for (int second = 0; second < kSecondsSeen; ++second) {
        GiveSecond(source, second);
        QCoreApplication::processEvents();
    }
    source.events->StateChanged();
    QCoreApplication::processEvents();
    return frame.grab().toImage();
}

}  // namespace

std::vector<Scene> FirstMinutesScenes() {
    return {{"first_start", FirstStartPage}, {"live", Live}};
}

}  // namespace wavo::testing
