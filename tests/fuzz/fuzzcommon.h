#pragma once

// What every fuzz target shares: the input as bytes, silence from Qt, and the
// verdict on a round trip. A target aborts, so that libFuzzer keeps the input.

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace Fuzz {

inline QByteArray input(const uint8_t *data, size_t size)
{
    // Every reader must stay silent: a message is a fault like a crash.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &message) {
        std::fprintf(stderr, "unexpected message: %s\n", qUtf8Printable(message));
        std::abort();
    });
    return QByteArray(reinterpret_cast<const char *>(data), qsizetype(size));
}

// Control characters and lone surrogates shown as \u escapes.
inline QString shown(const QString &text)
{
    QString out;
    for (const QChar c : text) {
        if (c.unicode() < 0x20 || c.isSurrogate() || c.unicode() == 0x7f)
            out += QStringLiteral("\\u%1").arg(c.unicode(), 4, 16, QLatin1Char('0'));
        else
            out += c;
    }
    return out;
}

[[noreturn]] inline void fail(const char *what, const QString &details)
{
    std::fprintf(stderr, "round trip: %s\n%s\n", what, qUtf8Printable(details));
    std::abort();
}

template<typename T>
void expectEqual(const char *what, const T &first, const T &second,
                 const QString &firstShown, const QString &secondShown)
{
    if (!(first == second))
        fail(what, QStringLiteral("read:      %1\nread back: %2")
                           .arg(shown(firstShown), shown(secondShown)));
}

inline void expectEqual(const char *what, const QString &first, const QString &second)
{
    expectEqual(what, first, second, first, second);
}

} // namespace Fuzz
