// The smallest window that shows a curve with QCustomPlot.
#include <qcustomplot.h>

#include <QApplication>
#include <cmath>

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QCustomPlot plot;
    plot.resize(1366, 768);
    QCPGraph* const graph = plot.addGraph();
    for (int i = 0; i < 1000; ++i) {
        graph->addData(i, std::sin(i * 0.01));
    }
    plot.rescaleAxes();
    plot.show();
    return QApplication::exec();
}
