#include "app/PreferencesFormat.h"
#include "app/PreferencesFile.h"
#include "tests/Files.h"
#include "tests/TestProgram.h"

#include <QBuffer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <memory>

#include <sys/resource.h>

namespace vesk {

using namespace Qt::StringLiterals;

class PreferencesFormatTest final : public QObject {
    Q_OBJECT

private slots:
    void init() { folder_ = std::make_unique<QTemporaryDir>(); }
    void keepsValues();
    void readsAnEarlierFile();
    void oddLinesAreLeftOut();
    void staysWhenItCannotBeWritten();
    void deviceThatIsNoFileIsWritten();
    void closedDeviceFailsToBeWritten();

private:
    [[nodiscard]] QString path() const { return folder_->filePath(u"a.conf"_s); }

    std::unique_ptr<QTemporaryDir> folder_;
};

void PreferencesFormatTest::keepsValues() {
    for (const auto& key : {u"one"_s, u"two"_s}) {
        QSettings preferences(path(), preferencesFormat());
        QVERIFY(!preferences.value(key).toBool());
        preferences.setValue(key, true);
        preferences.sync();
        QCOMPARE(preferences.status(), QSettings::NoError);
    }
    QCOMPARE(content(path()), "[General]\none=true\ntwo=true\n");
    const QSettings preferences(path(), preferencesFormat());
    QVERIFY(preferences.value(u"one"_s).toBool() && preferences.value(u"two"_s).toBool());
}

void PreferencesFormatTest::readsAnEarlierFile() {
    {
        QSettings earlier(path(), QSettings::IniFormat);
        earlier.setValue(u"yes"_s, true);
        earlier.setValue(u"no"_s, false);
    }
    const QSettings preferences(path(), preferencesFormat());
    QVERIFY(preferences.value(u"yes"_s).toBool());
    QVERIFY(preferences.contains(u"no"_s) && !preferences.value(u"no"_s).toBool());
}

void PreferencesFormatTest::oddLinesAreLeftOut() {
    write(path(), "[General]\n=nameless\n\nno sign\na=\nb=c=d\n");
    const QSettings preferences(path(), preferencesFormat());
    QCOMPARE(preferences.allKeys(), (QStringList{u"a"_s, u"b"_s}));
    QCOMPARE(preferences.value(u"a"_s).toString(), QString());
    QCOMPARE(preferences.value(u"b"_s).toString(), u"c=d"_s);
}

/// A limit on the size of files is a disk that is full after the toolkit's lock was written.
void PreferencesFormatTest::staysWhenItCannotBeWritten() {
    const QByteArray before = "[General]\nold=" + QByteArray(1000, 'x') + '\n';
    write(path(), before);
    rlimit usual{};
    QCOMPARE(getrlimit(RLIMIT_FSIZE, &usual), 0);
    const rlimit small{500, usual.rlim_max};
    const auto usualAction = std::signal(SIGXFSZ, SIG_IGN);
    QCOMPARE(setrlimit(RLIMIT_FSIZE, &small), 0);
    QSettings preferences(path(), preferencesFormat());
    preferences.setValue(u"new"_s, true);
    preferences.sync();
    const auto status = preferences.status();
    setrlimit(RLIMIT_FSIZE, &usual);
    std::signal(SIGXFSZ, usualAction);
    QCOMPARE(status, QSettings::AccessError);
    QCOMPARE(content(path()), before);
    preferences.sync();
    QVERIFY(content(path()).contains("new=true"));
}

void PreferencesFormatTest::deviceThatIsNoFileIsWritten() {
    QBuffer buffer;
    QVERIFY(buffer.open(QIODevice::WriteOnly));
    QVERIFY(writePreferences(buffer, {{u"key"_s, u"value"_s}}));
    QCOMPARE(buffer.data(), "[General]\nkey=value\n");
}

void PreferencesFormatTest::closedDeviceFailsToBeWritten() {
    QBuffer buffer;
    QTest::ignoreMessage(QtWarningMsg, "QIODevice::write (QBuffer): device not open");
    QVERIFY(!writePreferences(buffer, {{u"key"_s, u"value"_s}}));
}

} // namespace vesk

VESK_TEST(vesk::PreferencesFormatTest)
#include "PreferencesFormatTest.moc"
