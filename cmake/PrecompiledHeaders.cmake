# Headers that are read once per build: dear ones that do not change while one works on Wavo. Each set
# links the least of Qt that its targets have, since a target must define each macro that its set defines.
set(standard_headers
  <algorithm> <array> <cerrno> <cmath> <cstddef> <cstdint> <cstdlib> <cstring> <filesystem> <fstream>
  <functional> <limits> <map> <memory> <optional> <random> <set> <span> <sstream> <string>
  <string_view> <utility> <vector>)
set(gui_headers <QColor> <QFont> <QFontMetrics> <QImage> <QPainter> <QRect> <QString>)
set(widgets_headers
  ${gui_headers} <QAction> <QApplication> <QCheckBox> <QComboBox> <QDialog> <QDir> <QDockWidget>
  <QFileDialog> <QKeyEvent> <QLabel> <QLineEdit> <QMainWindow> <QMenu> <QMenuBar> <QMessageBox>
  <QMouseEvent> <QPushButton> <QRadioButton> <QSettings> <QStatusBar> <QToolBar> <QWidget>)
set(test_headers <gmock/gmock.h> <gtest/gtest.h>)

wavo_precompiled(gui HEADERS ${standard_headers} ${gui_headers} LINK Qt6::Gui)
wavo_precompiled(widgets HEADERS ${standard_headers} ${widgets_headers} LINK Qt6::Widgets)
if(WAVO_TESTS)
  include(cmake/GoogleTest.cmake)
  find_package(Qt6 6.4 REQUIRED COMPONENTS Test)
  wavo_precompiled(test_plain HEADERS ${standard_headers} ${test_headers} LINK GTest::gmock)
  wavo_precompiled(test_gui HEADERS ${standard_headers} ${test_headers} ${gui_headers}
    LINK GTest::gmock Qt6::Gui)
  wavo_precompiled(test_widgets
    HEADERS ${standard_headers} ${test_headers} ${widgets_headers} <QTemporaryDir>
    LINK GTest::gmock Qt6::Widgets)
endif()
