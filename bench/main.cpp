#include "benchutil.h"

#include <QApplication>

#include <cstdio>

// Prints the speed figures of the document, project and editor layers and of
// the checker. Every ratio compares two times measured in this one run on this
// one machine.
int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", qgetenv("QT_QPA_PLATFORM").isEmpty() ? "offscreen"
                                                                     : qgetenv("QT_QPA_PLATFORM"));
    QApplication app(argc, argv);

    std::printf("Help documents\n");
    benchDocuments();
    std::printf("Projects\n");
    benchProject();
    std::printf("Editor\n");
    benchEditor();
    std::printf("Checker\n");
    benchCheck();
    return 0;
}
