#include "tests/mutation/Sites.h"
#include "tests/TestProgram.h"

#include <QStringList>
#include <QTest>

#include <initializer_list>

namespace vesk {

namespace {

/// "kind: before -> after" for each way to break `source`.
QStringList breaksOf(const std::string& source) {
    QStringList breaks;
    for (const Site& site : sitesIn(source)) {
        for (const std::string& replacement : site.replacements) {
            breaks += QString::fromStdString(
                std::string(nameOf(site.kind)) + ": " + source.substr(site.begin, site.length)
                + " -> " + replacement);
        }
    }
    return breaks;
}

} // namespace

class SitesTest final : public QObject {
    Q_OBJECT

private slots:
    void breaks_data();
    void breaks();
};

void SitesTest::breaks_data() {
    QTest::addColumn<QByteArray>("source");
    QTest::addColumn<QStringList>("expected");

    const auto row = [](const char* name, const char* source,
                        std::initializer_list<const char*> expected) {
        QStringList breaks;
        for (const char* one : expected) {
            breaks += QString::fromUtf8(one);
        }
        QTest::newRow(name) << QByteArray(source) << breaks;
    };
    row("equality", "return a == b;", {"operator: == -> !="});
    row("comparison", "return a < b;", {"operator: < -> <=", "operator: < -> >="});
    row("logic", "return a && !b;", {"operator: && -> ||", "operator: ! -> "});
    row("sum over two lines", "return a\n    + b;", {"operator: + -> -"});
    row("step", "for (; a != b; ++a) {", {"operator: != -> ==", "operator: ++ -> --"});
    row("sign", "return -a;", {});
    row("template", "std::vector<int> values(std::optional<bool>&& a, int* b);", {});
    row("comment", "// a < b, 1\n/* true */", {});
    row("preprocessor", "#if A == 1 && \\\n    B == 2\n#endif", {});
    row("attribute", "[[nodiscard(\"text\")]] int a();", {});

    row("if", "if (a) {",
        {"condition: a -> !(a)", "condition: a -> false", "condition: a -> true"});
    row("if that declares", "if (const int* a = b(); c()) {",
        {"condition: c() -> !(c())", "condition: c() -> false", "condition: c() -> true"});
    row("if that asks what it declares", "if (const int* a = b()) {",
        {"condition: const int* a = b() -> const int* a = b(); !a"});
    row("while", "while (a(b)) {", {"condition: a(b) -> !(a(b))", "condition: a(b) -> false"});
    row("choice", "return a(b) ? c : d;", {"condition: a(b) -> !(a(b))"});
    row("choice of an argument", "a(b, c ? d : e);", {"condition: c -> !(c)"});

    row("call", "void f() {\n    a.b(c);\n}", {"statement: a.b(c); -> "});
    row("call that holds a function", "void f() {\n    a([] {\n        b();\n    });\n}",
        {"statement: a([] {\n        b();\n    }); -> ", "statement: b(); -> "});
    row("assignment", "void f() {\n    a->b = c;\n}", {"statement: a->b = c; -> "});
    row("signal", "void f() {\n    emit a();\n}", {"statement: emit a(); -> "});
    row("jump", "void f() {\n    return;\n}", {"statement: return; -> "});
    row("declaration", "void f() {\n    Type a(b);\n    const auto c = d;\n}", {});
    row("members", "class A {\n    A(B b);\n    Q_OBJECT\n    void a();\n};", {});
    row("body inside a class", "class A {\n    void a() { b(); }\n};", {"statement: b(); -> "});

    row("number", "constexpr int a = 10'000;", {"number: 10'000 -> 10001"});
    row("nought", "int a = 0;", {"number: 0 -> 1"});
    row("fraction", "double a = 4.25;", {"number: 4.25 -> 5.25"});
    row("duration", "auto a = 500ms;", {"number: 500ms -> 501ms"});
    row("hexadecimal", "int a = 0x7f;", {"number: 0x7f -> 128"});

    row("boolean", "bool a = true;", {"boolean: true -> false"});

    row("text", "auto a = u\"Start\"_s;", {"text: u\"Start\"_s -> u\"Stbrt\"_s"});
    row("quotes and escapes", R"(auto a = "\n\"b\"";)", {R"(text: "\n\"b\"" -> "\n\"c\"")"});
    row("text without letters", "auto a = \" \"_ba;", {"text: \" \"_ba -> \"x\"_ba"});
    row("empty text", "auto a = u\"\"_s;", {"text: u\"\"_s -> u\"x\"_s"});
    row("raw text", "auto a = R\"(say \"z\")\";", {"text: R\"(say \"z\")\" -> R\"(saz \"z\")\""});
    row("letter", "auto a = u'a';", {"text: u'a' -> u'b'"});
    row("blank", "auto a = ' ';", {"text: ' ' -> 'x'"});
}

void SitesTest::breaks() {
    QFETCH(const QByteArray, source);
    QFETCH(const QStringList, expected);
    QCOMPARE(breaksOf(source.toStdString()), expected);
}

} // namespace vesk

VESK_TEST(vesk::SitesTest)
#include "SitesTest.moc"
