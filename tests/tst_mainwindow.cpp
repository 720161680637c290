#include <QtTest>

class TstMainwindow : public QObject
{
    Q_OBJECT
};

QTEST_MAIN(TstMainwindow)
#include "tst_mainwindow.moc"
