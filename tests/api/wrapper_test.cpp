// wrapper_test.cpp: what the wrapper adds to the library's calls, which calls it does not make, and
// loading the library.
#include <dlfcn.h>

#include "api/vltapid.h"
#include "api/vltrecords.h"
#include "tests/support/scripted_api.h"
#include "tests/support/tempdir.h"
#include "tests/support/traced.h"

namespace {

using std::pair, std::string, std::to_string, std::tuple, support::ScriptedApi, support::Step;

TEST(Wrapper, PassesArgumentsAndCodesUnchanged) {
  VltApiStatusObjP->totalTime = 0;
  const VltObjName name = {"/fs", "/high", "/low", 1};
  const VltQueryBackup query = {2, &name, "own", 1, {}};
  ScriptedApi api({Step("vltBeginQuery", "4294967295 1 '/fs' '/high' '/low' owner='own'", -32768),
                   Step("vltEndTxn", "7 2").fill<std::uint16_t>([](auto& reason) {
                     EXPECT_EQ(1, VltApiStatusObjP->insideApiCall);
                     ::usleep(20000);
                     reason = 9;
                   }),
                   Step("vltTerminate", "7", 2402)});
  EXPECT_EQ(-32768, api.dvltBeginQuery(VltApiStatusObjP, 0xFFFFFFFF, 1, &query));
  std::uint16_t reason = 0;
  const string line = support::traced("PERFORMANCE", [&] {
    EXPECT_EQ(0, api.dvltEndTxn(VltApiStatusObjP, 7, VLT_VOTE_ABORT, &reason));
    EXPECT_EQ(0, api.dvltTerminate(VltApiStatusObjP, 0)) << "no session: the library is not asked";
    api.LogApiStatus(VltApiStatusObjP);
  });
  EXPECT_EQ(pair(9, 0), pair(int{reason}, int{VltApiStatusObjP->insideApiCall}));
  const auto end = [&] { EXPECT_EQ(2402, api.dvltTerminate(VltApiStatusObjP, 7)); };
  EXPECT_HOLDS(support::traced("API", end), "Exit DVltApi::dvltTerminate(), rc = 2402\n");
  EXPECT_GE(VltApiStatusObjP->totalTime, 20) << "milliseconds, which the trace calls seconds";
  EXPECT_GE(std::stoi(line.substr(line.rfind(':') + 1)), 20);
  EXPECT_EQ(
      "Elapsed milliseconds #, for ZYL Api call \n"
      "Performance stats: # seconds spent in ZYL API calls\n",
      support::masked(line));
  DVltApi::ClearPointers();  // an assertion stops the call if it is compiled in; else it fails
  EXPECT_DEBUG_DEATH(EXPECT_EQ(419, api.dvltBeginTxn(VltApiStatusObjP, 7)), "not loaded");
}

TEST(Wrapper, AcceptsLibrariesByTheirWeight) {
  for (const auto& [found, rc] : {pair(VltApiVersionEx{2, 8, 1, 13, 0}, 0),
                                  {{2, 8, 1, 12, 99}, 107},
                                  {{2, 8, 2, 0, 0}, 107},
                                  {{2, 9, 0, 0, 0}, 0}}) {
    const auto answer = [version = found](VltApiVersionEx& out) { out = version; };
    ScriptedApi api({Step("vltQueryApiVersionEx").fill<VltApiVersionEx>(answer)});
    EXPECT_EQ(rc, api.checkCompatibility(VltApiStatusObjP, nullptr)) << found.level;
  }
}

TEST(CodeText, IsCutToTheBufferAndReportedWithItsFullLength) {
  for (const auto& [size, rc, wanted, whole] :
       {tuple(8u, std::int16_t{0}, "ZYL2302", 8u), {9, 0, "ZYL2302E", 8}, {9, 2405, "", 0}}) {
    ScriptedApi api({Step("vltRCMsg", "7 2", rc).text("ZYL2302E")});
    char text[] = "??????????";
    unsigned length = 99;
    EXPECT_EQ(rc, api.AgtVltRCMsg(VltApiStatusObjP, 7, 2, text, size, &length));
    EXPECT_EQ(pair(string(wanted), whole), pair(string(text), length));
    EXPECT_EQ('?', text[size]) << "nothing is written past the buffer";
  }
  for (const unsigned length : {255u, 256u, unsigned{VLT_MAX_RC_TEXT}}) {
    const string text(length, 't');  // one that was cut is asked for again
    ScriptedApi api(std::vector(length > 255 ? 2 : 1, Step("vltRCMsg", "7 51").text(text)));
    api.add({Step("vltLogMessage", "7 3 'error 51 returned from vltInit: " + text + "'")});
    api.LogApiError(VltApiStatusObjP, 7, 51, "vltInit");
  }
}

TEST(Loading, TracesEveryStepOfAFailure) {
  DVltApiDL library;  // there is none
  const string text = support::traced("API", [&] { EXPECT_EQ(104, library.Setup()); });
  EXPECT_EQ(0u, text.find("Enter DVltApiDL::Setup()\nCalling dlopen()\nERROR: could not load"));
  EXPECT_EQ(
      "NUM_API_FUNCS = 45\ndlsym(m_hMarlDll, vltBeginGetData) returned (nil), j = 0\n"
      "Enter DVltApiDL::Cleanup()\nZYL API is not loaded\n"
      "Exit DVltApiDL::Cleanup(), rc = 0\nExit DVltApiDL::Setup(), rc = 104\n",
      text.substr(text.find("NUM_API_FUNCS")));
}

// A library that is loaded under its path is found by its name.
TEST(Loading, IsUndoneWholeAndThenDoneAgain) {
  void* const whole = ::dlopen(WHOLE_LIBRARY "/libApiDS64.so", RTLD_NOW);
  ASSERT_NE(nullptr, whole) << ::dlerror();
  struct Library : DVltApiDL {
    // The handle, and the last of the pointers.
    static auto loaded() { return pair(m_hMarlDll != nullptr, m_fnvltUpdateObjP != nullptr); }
  } library;
  for (int again = 0; again < 2; ++again) {
    EXPECT_EQ(0, library.Setup());
    EXPECT_EQ(pair(true, true), Library::loaded());
    EXPECT_EQ(0, library.Cleanup());
    EXPECT_EQ(pair(false, false), Library::loaded());
  }
  ::dlclose(whole);
  EXPECT_EQ(nullptr, ::dlopen(WHOLE_LIBRARY "/libApiDS64.so", RTLD_NOW | RTLD_NOLOAD));
}

TEST(SetUp, IsDoneOnceAndUndoneOnceAndSaysWhichStepFailed) {
  const support::ScopedEnv dir("VLTI_DIR", "/dir/"), config("VLTI_CONFIG", "/not.this");
  support::ScopedEnv log("VLTI_LOG", string(1280, 'x').c_str());
  const auto paths = [](const VltEnvSetUp& record) {
    EXPECT_EQ("/dir//own.opt", string(record.vltiDir) + record.vltiLog + record.vltiConfig);
  };
  ScriptedApi api(
      {Step("vltSetUp", "1", 2409), Step("vltSetUp", "1").fill<const VltEnvSetUp>(paths),
       Step("vltCleanUp", "1", 2401)},
      "/own.opt");
  RC_TYPE type = 0;
  EXPECT_EQ(1702, api.Init(VltApiStatusObjP, &type));
  EXPECT_EQ(kRcTypeDirectory, type);
  log.set("/");
  EXPECT_EQ(2409, api.Init(VltApiStatusObjP, &type));
  EXPECT_EQ(kRcTypeSetUp, type);
  EXPECT_EQ(0, api.Term(VltApiStatusObjP)) << "not set up: nothing is undone";
  for (int again = 0; again < 2; ++again) EXPECT_EQ(0, api.Init(VltApiStatusObjP, nullptr));
  for (const int rc : {2401, 0}) EXPECT_EQ(rc, api.Term(VltApiStatusObjP));
}

TEST(FirstFailure, IsKept) {
  CFirstFailureRc rc = 0;
  for (const int next : {0, 7, 8, 0}) rc = next;
  EXPECT_EQ(7, rc = CFirstFailureRc(9));
}

TEST(Records, AreCopiedWholeBothWays) {
  const auto fields = [](const auto& r) {
    return r.objName.fileSpace + string(r.objName.highLevel) + r.objName.lowLevel + r.owner +
           ut::isoDate(api::toNfDate(r.insDate)).text + ' ' + to_string(api::toNumber(r.objId)) +
           ' ' + to_string(api::toNumber(r.sizeEstimate)) +
           string{char(r.objState), char(r.objName.objType), char(r.compressType),
                  char(r.encryptionType), char(r.clientDeduplicated)};
  };
  const VltObjName name = {"/fs", "/high", "/low", 'b'};
  const VltQryRespBackup given = {8,      'a', name, "own", {0, 4}, {2026, 3, 7, 8, 5, 9},
                                  {1, 0}, 'c', 'd',  'e'};
  VEXS_qryRespBackupData ours = {};
  VltQryRespBackup back = {};
  api::copyResponse(given, &ours);
  api::copyResponse(ours, &back);
  EXPECT_EQ("/fs/high/lowown2026-03-07T08:05:09 4 4294967296abcde", fields(ours));
  EXPECT_EQ(fields(ours), fields(back));
}

}  // namespace
