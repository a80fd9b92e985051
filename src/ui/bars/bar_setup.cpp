#include "ui/bars/bar_setup.h"

#include <QSettings>
#include <QStringList>
#include <algorithm>
#include <iterator>

#include "ui/bars/command_icons.h"
#include "ui/bars/commands.h"

namespace wavo {

namespace {

const char kStandard[] = "Standard";

QString JoinNumbers(const auto& numbers) {
    QStringList texts;
    for (const int number : numbers) {
        texts << QString::number(number);
    }
    return texts.join(u',');
}

std::vector<int> SplitNumbers(const QString& text) {
    std::vector<int> numbers;
    for (const QString& part : text.split(u',', Qt::SkipEmptyParts)) {
        bool is_number = false;
        const int number = part.toInt(&is_number);
        if (is_number) {
            numbers.push_back(number);
        }
    }
    return numbers;
}

bool MayStandInToolBar(int number) {
    return !CommandIcon(static_cast<CommandId>(number)).isNull() &&
           static_cast<CommandId>(number) != CommandId::kToolBars;
}

/// Adds the bars of a later version of the program than the one that stored the setup: those that
/// it did not know. What the user removed stays so.
void AddBarsThatAreNew(BarSetup& setup, const QStringList& known) {
    for (const BarContent& bar : DefaultBarSetup().bars) {
        const bool is_there =
            std::any_of(setup.bars.begin(), setup.bars.end(),
                        [&bar](const BarContent& other) { return other.name == bar.name; });
        if (!is_there && !known.contains(bar.name)) {
            setup.bars.push_back(bar);
        }
    }
}

void NormalizeItems(std::vector<int>& items) {
    std::set<int> seen;
    std::erase_if(items, [&seen](int item) {
        return item != kSeparatorItem && (!MayStandInToolBar(item) || !seen.insert(item).second);
    });
}

}  // namespace

std::vector<CommandId> ToolBarCommands() {
    std::vector<CommandId> ids;
    for (const Command& command : Commands()) {
        if (MayStandInToolBar(static_cast<int>(command.id))) {
            ids.push_back(command.id);
        }
    }
    return ids;
}

BarSetup DefaultBarSetup() {
    constexpr CommandId kSeparator{kSeparatorItem};
    BarContent standard{QString::fromLatin1(kStandard), {}};
    for (const CommandId id :
         {CommandId::kNew, CommandId::kOpen, CommandId::kSave, kSeparator, CommandId::kPrint,
          kSeparator, CommandId::kConnect, kSeparator, CommandId::kStart, CommandId::kStop,
          CommandId::kStartAfterTrigger, kSeparator, CommandId::kShowGraphEditor,
          CommandId::kProperties, kSeparator, CommandId::kAbout}) {
        standard.items.push_back(static_cast<int>(id));
    }
    BarContent recording{QStringLiteral("Recording"), {}};
    for (const CommandId id :
         {CommandId::kRecord, CommandId::kStopRecording, CommandId::kOpenRecording}) {
        recording.items.push_back(static_cast<int>(id));
    }
    BarSetup setup;
    setup.bars = {std::move(standard), std::move(recording)};
    return setup;
}

void Normalize(BarSetup& setup) {
    std::set<QString> names;
    std::erase_if(setup.bars, [&names](const BarContent& bar) {
        return bar.name.trimmed().isEmpty() || !names.insert(bar.name).second;
    });
    const auto standard =
        std::find_if(setup.bars.begin(), setup.bars.end(),
                     [](const BarContent& bar) { return bar.name == QLatin1String(kStandard); });
    if (standard == setup.bars.end()) {
        setup.bars.insert(setup.bars.begin(), DefaultBarSetup().bars.front());
    } else {
        std::rotate(setup.bars.begin(), standard, standard + 1);
    }
    for (BarContent& bar : setup.bars) {
        NormalizeItems(bar.items);
    }
    if (std::find(std::begin(kIconSizes), std::end(kIconSizes), setup.icon_size) ==
        std::end(kIconSizes)) {
        setup.icon_size = BarSetup().icon_size;
    }
    std::erase_if(setup.user_images, [](const auto& entry) {
        return entry.second < 0 || !MayStandInToolBar(entry.first);
    });
}

BarSetup LoadBarSetup(QSettings* settings) {
    BarSetup setup = DefaultBarSetup();
    if (settings == nullptr) {
        return setup;
    }
    setup.icon_size = settings->value(QStringLiteral("IconSize"), setup.icon_size).toInt();
    setup.full_menus = settings->value(QStringLiteral("FullMenus"), setup.full_menus).toBool();
    for (const int id : SplitNumbers(settings->value(QStringLiteral("UsedCommands")).toString())) {
        setup.used_commands.insert(id);
    }
    const int bars = settings->beginReadArray(QStringLiteral("ToolBars"));
    if (bars > 0) {
        setup.bars.clear();
    }
    for (int index = 0; index < bars; ++index) {
        settings->setArrayIndex(index);
        setup.bars.push_back({settings->value(QStringLiteral("Name")).toString(),
                              SplitNumbers(settings->value(QStringLiteral("Items")).toString())});
    }
    settings->endArray();
    AddBarsThatAreNew(setup, settings->value(QStringLiteral("KnownBars")).toStringList());
    settings->beginGroup(QStringLiteral("UserImages"));
    for (const QString& key : settings->childKeys()) {
        setup.user_images[key.toInt()] = settings->value(key).toInt();
    }
    settings->endGroup();
    Normalize(setup);
    return setup;
}

void SaveBarSetup(QSettings* settings, const BarSetup& setup) {
    if (settings == nullptr) {
        return;
    }
    settings->setValue(QStringLiteral("IconSize"), setup.icon_size);
    settings->setValue(QStringLiteral("FullMenus"), setup.full_menus);
    settings->setValue(QStringLiteral("UsedCommands"), JoinNumbers(setup.used_commands));
    QStringList known;
    for (const BarContent& bar : DefaultBarSetup().bars) {
        known << bar.name;
    }
    settings->setValue(QStringLiteral("KnownBars"), known);
    settings->remove(QStringLiteral("ToolBars"));
    settings->beginWriteArray(QStringLiteral("ToolBars"), static_cast<int>(setup.bars.size()));
    for (int index = 0; index < static_cast<int>(setup.bars.size()); ++index) {
        const BarContent& bar = setup.bars[static_cast<std::size_t>(index)];
        settings->setArrayIndex(index);
        settings->setValue(QStringLiteral("Name"), bar.name);
        settings->setValue(QStringLiteral("Items"), JoinNumbers(bar.items));
    }
    settings->endArray();
    settings->remove(QStringLiteral("UserImages"));
    settings->beginGroup(QStringLiteral("UserImages"));
    for (const auto& [id, image] : setup.user_images) {
        settings->setValue(QString::number(id), image);
    }
    settings->endGroup();
}

}  // namespace wavo
