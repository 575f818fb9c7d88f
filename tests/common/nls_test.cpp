// nls_test.cpp: message texts with hostile conversions, damaged catalogs, questions and languages.
#include "common/nls/nls.h"

#include "common/ut/nfdate.h"
#include "common/ut/utf8.h"
#include "tests/support/captured.h"
#include "tests/support/tempdir.h"

namespace {

using std::pair, std::string, std::tuple, support::Captured;

TEST(MessageText, TakesItsInsertsOrIsRefused) {
  const nls::Insert all[] = {"%n%s", 'c', -42, UINT64_MAX, INT64_MIN, "not an insert"};
  for (const auto& [text, expected] :
       {pair("", "kept "),
        {"100%% %s", "kept 100% %n%s"},
        {"%2$c then %1$s", "kept c then %n%s"},
        {"<%1$5s|%1$-5s|%1$.2s|%1$3.1s>", "kept < %n%s|%n%s |%n|  %>"},
        {"%3$05d %3$-4d| %3$hhi", "kept -0042 -42 | -42"},
        {"%4$#x %4$#X %4$lX", "kept 0xffffffffffffffff 0XFFFFFFFFFFFFFFFF FFFFFFFFFFFFFFFF"},
        {"%4$u %5$d", "kept 18446744073709551615 -9223372036854775808"}}) {
    string out = "kept ";
    EXPECT_TRUE(nls::render(text, {all, 5}, out)) << text;
    EXPECT_EQ(expected, out);
  }
  std::istringstream refused(
      "%d|%1$c|%2$s|%2$d|%3$s|%6$s|%0$s|%99999999999999999999$s|%n|%p|%f|%3$n|%*s|%.*s|%2000s|"
      "%.99999999999999999999s|%|%5|%ll|%-|%1$|good %s, bad %s|%1$$s|% s");
  for (string text, out = "kept"; std::getline(refused, text, '|');) {
    EXPECT_TRUE(!nls::render(text, {all, 5}, out) && out == "kept") << text << " gives " << out;
  }
}

class Messages : public testing::Test {
 protected:
  Messages() {
    EXPECT_EQ(0, newNlsGlobalObject());
    nlsSetPrefix("QRB");
  }
  ~Messages() override {
    destroyNlsGlobalObject();
    ut::setRunFormats({1, 1, 1});
  }
  void compile(const char* name, const string& text) {
    const string source = dir.write("source.msg", "$quote \"\n$set 1\n" + text);
    ASSERT_EQ(0, std::system((GENCAT " " + dir.path(name) + " " + source).c_str()));
  }
  unsigned short open(const char* name) {
    return nlinit(name, 2, dir.path().c_str(), 0, 3, 2, 5, &info, "vexo.cat");
  }
  support::TempDir dir;
  nlsReturnInfo info = {};
};

TEST_F(Messages, AreShownByTheirLetterAndReportedWhenDamaged) {
  compile("vexo.cat",
          "10 QRB0010EAn error, %s\n11 QRB0011SSevere\n12 QRB0012Z  alone\n13 QRB0013MOther\n"
          "14 QRB0014DLow\n15 QRB0015[High\n17 QRB0017\n18\n19 QRB0019Etakes %d\n");
  ASSERT_EQ(0, open("vexo.cat"));
  const string shown[] = {"QRB0010E An error, x", "QRB0011S Severe", "  alone", "QRB0013M Other"};
  for (const int number : {10, 11, 12, 13, 14, 15, 17, 18, 19, 20, 10}) {  // the cache has two
    const string wrong = number == 20 ? "E Message not found" : "E Message corrupted";
    const string damaged = "QRB00" + std::to_string(number) + wrong + " in the message catalog: x";
    const string text = nlsprintf(nls::Message<'s'>(number), "x");
    EXPECT_EQ(number < 14 ? shown[number - 10] : damaged, text);
    Captured out;
    nlprintf(nls::Message<'s'>(number), "x");
    EXPECT_EQ(text + (number == 12 ? "" : "\n"), out.take());
  }
  EXPECT_EQ("QRB0020E Message not found in the message catalog: x, y, 7",
            nlsprintf(nls::Message<'s', 'c', 'd'>(20), "x", 'y', 7));
}

TEST_F(Messages, ComeFromTheDefaultCatalogWhenTheWantedOneIsMissing) {
  const auto expect = [&](int rc, int usedDefault, const string& text) {
    EXPECT_EQ(pair(rc, usedDefault), pair(int{open("vexo_fra.cat")}, info.usedDefault));
    EXPECT_EQ(0u, nlsprintf(nls::Message<>(10)).find(text)) << text;
  };
  expect(nls::kCatalogNotOpened, 0, "QRB0010E Message not found");
  // These need no catalog.
  EXPECT_EQ("ab\n\n",
            nlsprintf(msg::kText, "a") + nlsprintf(msg::kLine, "b") + nlsprintf(msg::kBlankLine));
  compile("vexo.cat", "10 QRB0010IEnglish\n");
  expect(0, 1, "QRB0010I English");
  EXPECT_EQ(dir.path("vexo.cat"), info.catalogPath);
  EXPECT_STREQ("%Y-%m-%d", ut::date_fmt_str()) << "the run's formats are set";
  compile("vexo_fra.cat", "10 QRB0010IFrench\n");
  expect(0, 0, "QRB0010I French");  // nothing of the last catalog is cached
  nlterm();
  EXPECT_EQ(0u, nlsprintf(nls::Message<>(10)).find("QRB0010E Message not found"));
}

TEST(Wrapped, EndsLinesBetweenWordsAndKeepsColumns) {
  const pair<const char*, const char*> rows[] = {
      {"1234567 9", "1234567\n9"},     {"a longer-than-a-line x", "a\nlonger-than-a-line\nx"},
      {"12345678 0", "12345678\n0"},   {"one\ntwo three four", "one\ntwo\nthree\nfour"},
      {"  a:  b c d", "  a:  b\nc d"}, {"    indented", "    indented"},
      {"äöü äö x y", "äöü äö x\ny"},   {"a b\n123456789\n1234 678", "a b\n123456789\n1234 678"}};
  for (const auto& [text, expected] : rows) {
    EXPECT_EQ(expected, ut::wrapped(text, 8));
  }
}

TEST(Language, ChoosesACatalogByTheBeginningOfItsName) {
  const pair<const char*, const char*> rows[] = {
      {"../..", "vexo.cat"},          {"en_US.UTF-8", "vexo.cat"},
      {"AMENGLISH", "vexo.cat"},      {"German_Germany", "vexo_de.cat"},
      {"de_DE.UTF-8", "vexo_de.cat"}, {"../D_1", "vexo_d_1.cat"}};
  for (const auto& [language, expected] : rows) {
    char name[32];
    psNlsGetReposName(language, name, sizeof name);
    EXPECT_STREQ(expected, name) << language;
  }
}

TEST_F(Messages, AskUntilOneOfTheCatalogsLettersIsGiven) {
  compile("vexo.cat", "1 QRB0001Z?\n2 QRB0002Z?\n3 QRB0003EOf %s\n$set 2\n1 oN\n");
  ASSERT_EQ(0, open("vexo.cat"));
  const string tooLong = string(70, 'y') + "o\n", again = "QRB0003E Of O, N\n?",
               wrong = "?" + again, yesNo = "?QRB0003E Of Y, N\n?",
               lost = "QRB0004E Message not found in the message catalog\n";
  // The question, what is typed, the place of the letter and what is shown. There is no yes to a
  // question that cannot be shown.
  const tuple<int, string, int, string> rows[] = {
      {1, "o\n", 0, "?"},  {1, "  Non\n", 1, "?"},  {1, "y\n\nN\n", 1, wrong + again},
      {1, "", -1, "?"},    {2, "o\ny\n", 0, yesNo}, {4, "y\n", -1, lost},
      {4, "n\n", 1, lost}, {1, tooLong, -1, wrong}};
  for (const auto& [question, input, place, shown] : rows) {
    const support::FedInput fed(input);
    Captured out;
    EXPECT_EQ(place, nls::ask(nls::Message<>(question), nls::Message<'s'>(3))) << input;
    EXPECT_EQ(shown, out.take()) << input;
  }
}

}  // namespace
