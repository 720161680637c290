#pragma once

// What every fuzz target shares: the input, silence from Qt, and the verdict
// on a round trip. A fault aborts, so that libFuzzer keeps the input.

#include <QBuffer>
#include <QStringList>

#include <cstdio>
#include <cstdlib>

namespace Fuzz {

inline QByteArray input(const uint8_t *data, size_t size)
{
    // The readers must stay silent: a message is a fault like a crash.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &message) {
        std::fprintf(stderr, "unexpected message: %s\n", qUtf8Printable(message));
        std::abort();
    });
    return QByteArray(reinterpret_cast<const char *>(data), qsizetype(size));
}

[[noreturn]] inline void fail(const char *what, const QString &details)
{
    std::fprintf(stderr, "round trip: %s\n%s\n", what, qUtf8Printable(details));
    std::abort();
}

// Both reads, fields in a list, with control characters shown as escapes.
inline void expectEqual(const char *what, const QStringList &read, const QStringList &back)
{
    if (read == back)
        return;
    const auto shown = [](const QStringList &fields) {
        QString out = fields.join(u'|');
        for (qsizetype i = out.size() - 1; i >= 0; --i) {
            const int c = out.at(i).unicode();
            if (c < 0x20 || QChar::isSurrogate(char32_t(c)))
                out.replace(i, 1, QStringLiteral("\\u%1").arg(c, 4, 16, QChar(u'0')));
        }
        return out;
    };
    fail(what, QStringLiteral("read:      %1\nread back: %2").arg(shown(read), shown(back)));
}

// A buffer over bytes, open for reading, for readers that take a device.
struct Input : QBuffer
{
    explicit Input(QByteArray bytes)
        : m_bytes(std::move(bytes))
    {
        setBuffer(&m_bytes);
        open(QIODevice::ReadOnly);
    }
    QByteArray m_bytes;
};

} // namespace Fuzz
