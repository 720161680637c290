#include <QtTest>

class TstEditor : public QObject
{
    Q_OBJECT
};

QTEST_MAIN(TstEditor)
#include "tst_editor.moc"
