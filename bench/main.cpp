#include "benchutil.h"

#include <QApplication>

#include <cstdio>
#include <cstring>

// Prints the speed figures of the document, project and editor layers and of
// the checker. Every ratio compares two times measured in this one run on this
// one machine. A part's name as the argument runs that part alone.
int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM",
            qgetenv("QT_QPA_PLATFORM").isEmpty() ? "offscreen" : qgetenv("QT_QPA_PLATFORM"));
    QApplication app(argc, argv);
    if (argc == 3 && std::strcmp(argv[1], "--cold-open") == 0)
        return benchColdOpen(QString::fromLocal8Bit(argv[2]));
    if (argc == 3 && std::strcmp(argv[1], "--one-thread-parse") == 0)
        return benchFreshParse(QString::fromLocal8Bit(argv[2]));
    if (argc == 3 && std::strcmp(argv[1], "--pool-parse") == 0)
        return benchPoolParse(QString::fromLocal8Bit(argv[2]));
    const struct
    {
        const char *name;
        const char *title;
        void (*run)();
    } parts[] = {{"documents", "Help documents", benchDocuments},
                 {"project", "Projects", benchProject},
                 {"editor", "Editor", benchEditor},
                 {"check", "Checker", benchCheck},
                 {"translate", "Translation files", benchTranslate},
                 {"publish", "Publisher", benchPublish}};
    for (const auto &part : parts) {
        if (argc < 2 || std::strcmp(argv[1], part.name) == 0) {
            std::printf("%s\n", part.title);
            part.run();
        }
    }
    return 0;
}
