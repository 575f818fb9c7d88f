// memory_test.cpp: a whole SYNCDB in which the n-th allocation fails, for every n. It must end with
// a known code, leave no transaction open, and delete only what was picked.
//
// malloc and the start of programs are replaced at link time (--wrap), the allocation operators
// here. The storage library is a table in this file, which allocates nothing.
#include <spawn.h>
#include <sys/wait.h>

#include <bit>
#include <cstring>
#include <new>

#include "api/vltapi.h"
#include "common/ut/psmem.h"
#include "common/ut/trace.h"
#include "tests/support/traced.h"
#include "tests/utility/messages.h"
#include "utility/bplus.h"
#include "utility/syncdb.h"
#include "utility/syncdb_names.h"

namespace {

using std::string;

long countdown = -1;  // allocations until one fails; negative: none does
bool onlyOne = true;  // false: all later ones fail too
bool struck = false, environmentIsFull = false;

bool fails() {
  if (countdown <= 0) return countdown == 0 && !onlyOne;
  if (--countdown == 0) struck = true;
  return countdown == 0;
}

}  // namespace

extern "C" {
pid_t __real_waitpid(pid_t child, int* status, int flags);
int __real_putenv(char* text);
int __wrap_putenv(char* text) { return environmentIsFull ? -1 : __real_putenv(text); }
void* __real_malloc(std::size_t size);
void* __wrap_malloc(std::size_t size) { return fails() ? nullptr : __real_malloc(size); }
// Does not clear the screen; as sqlplus, it knows 40 other pieces.
int __wrap_posix_spawn(pid_t* child, const char*, const posix_spawn_file_actions_t*,
                       const posix_spawnattr_t*, char* const* arguments, char* const*) {
  *child = 1;
  const char* script = std::strchr(arguments[2], '@');
  std::FILE* file = script == nullptr ? nullptr : std::fopen(script + 1, "r");
  if (file == nullptr) return 0;
  char spool[1024] = "";  // the script's second line names it
  EXPECT_EQ(1, std::fscanf(file, "%*[^\n] spool %1000s", spool));
  EXPECT_EQ('/', *spool) << "in the temporary directory";
  std::fclose(file);
  file = std::fopen(spool, "w");
  for (int i = 0; i < 40; ++i) std::fprintf(file, "KNOWN_%d\n", i * 7 % 40);
  std::fclose(file);
  return 0;
}
pid_t __wrap_waitpid(pid_t child, int* status, int) { return *status = 0, child; }
}
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return fails() ? nullptr : __real_malloc(size);
}
[[gnu::noinline]] void* operator new(std::size_t size) {
  if (void* block = fails() ? nullptr : __real_malloc(size)) return block;
  throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* at) noexcept { std::free(at); }
[[gnu::noinline]] void operator delete(void* at, std::size_t) noexcept { std::free(at); }
[[gnu::noinline]] void operator delete(void* at, const std::nothrow_t&) noexcept { std::free(at); }

int vexosyncMain(int argc, char** argv);  // the program's main

namespace {

constexpr unsigned kObjects = 30, kAll = (1u << kObjects) - 1;

struct Server {
  unsigned there = kAll, going, next;  // a bit for each object
  bool inTransaction, loggedOn;
} server;

constexpr std::int16_t kDone = 0;

constexpr auto succeeds = [](auto...) { return kDone; };

class PlainLibrary : public DVltApi {
 public:
  PlainLibrary() : DVltApi("", "", "", nullptr) {
    gVltApiObjP = this;
    m_fnvltInitExP = [](auto* handle, auto...) {
      return *handle = 7, server.loggedOn = true, kDone;
    };
    m_fnvltTerminateP = [](auto) { return server.loggedOn = false, kDone; };
    m_fnvltQuerySessOptionsP = succeeds;
    m_fnvltQuerySessInfoP = [](auto, auto* info) { return info->maxObjPerTxn = 4, kDone; };
    m_fnvltBeginQueryP = succeeds;
    m_fnvltEndQueryP = succeeds;
    m_fnvltGetNextQObjP = [](auto, auto* block) -> std::int16_t {
      if (server.next == kObjects) return VLT_RC_FINISHED;
      auto& object = *static_cast<VltQryRespBackup*>(block->buffer);
      std::snprintf(object.objName.lowLevel, 20, "/PIECE_%u", server.next);
      object.objId = {0, server.next++};
      object.insDate = {2026, 3, 7, 8, 5, 9};
      return VLT_RC_MORE_DATA;
    };
    m_fnvltBeginTxnP = [](auto) {
      EXPECT_FALSE(std::exchange(server.inTransaction, true));
      return kDone;
    };
    m_fnvltDeleteObjP = [](auto, auto, auto* info) -> std::int16_t {
      server.going |= 1u << info->objId.lo;
      return info->objId.lo == 20 ? VLT_RC_NO_MATCH : kDone;  // a failed deletion is covered too
    };
    m_fnvltEndTxnP = [](auto, auto vote, auto) {
      if (vote == VLT_VOTE_COMMIT) server.there &= ~server.going;
      server.going = 0;
      return server.inTransaction = false, kDone;
    };
    m_fnvltRCMsgP = [](auto, auto, auto* text) {
      return std::strcpy(text, "ZYL a text that does not fit into the string object itself"), kDone;
    };
  }
  ~PlainLibrary() { ClearPointers(); }
  int Setup() override { return 0; }
  int Cleanup() override { return 0; }
};

TEST(LinkedList, TracesThatMemoryRanOut) {
  const string text = support::traced("LINKEDLIST", [] {
    CLinkedList<int> list;
    countdown = onlyOne = true;
    EXPECT_EQ(ut::kListNoMemory, list.addTail(1, 1));
    countdown = -1;
  });
  EXPECT_HOLDS(text, "\nInsufficent memory, NEW() failed.\nExit CLinkedList::addTail(), rc = 102");
}

// Breaks off a tree's growth at each copy, or each allocation, in turn: in leaves, inner nodes and
// the root. The copy function may return any code, those of the tree's own steps included.
TEST(BPlusTree, PassesOnEachFailureAndReleasesAllBlocksNevertheless) {
  static const void* given;  // the copy into the staging buffer is not checked, and does not count
  static std::size_t copies, failing, staged;
  static unsigned short code;  // of the copy that fails; 0: an allocation fails
  const auto copy = [](void* from, void* to) {
    staged += from == given ? 1 : 0;
    const bool fails = code != 0 && from != given && ++copies == failing;
    return fails ? code : utInsertFilename(from, to);
  };
  onlyOne = true;
  for (const auto& [step, first] : {std::pair(1, 1000), {-1, 1240}, {97, 1000}}) {
    for (const int failure : {0, 10, 11, 12, 13}) {
      code = static_cast<unsigned short>(failure);
      const short expected = static_cast<short>(code == 0 ? kTreeNoMemory : failure);
      short rc = expected;
      for (failing = 1; rc == expected; ++failing) {
        const std::size_t before = ut::trackedMemory().blocks;
        copies = staged = 0;
        {
          dsBPlusTree tree;
          countdown = code == 0 ? static_cast<long>(failing) : -1;
          rc = kTreeStored;
          for (int i = 0; rc == kTreeStored && i < (code == 0 ? 60 : 240); ++i) {
            char name[1100] = {};  // as a whole, its block is an allocation of its own
            const int length = std::snprintf(name, sizeof name, "%d", first + i * step);
            given = name;
            rc = tree.IsertItem(name, code == 0 ? 1100 : length + 1, copy, utFindFilename);
          }
          countdown = -1;
        }
        ASSERT_EQ(staged, ut::trackedMemory().blocks - before) << failure << ": " << failing;
      }
      ASSERT_EQ(kTreeStored, rc) << failure << ": " << failing - 1;
      ASSERT_GT(failing, code == 0 ? 150u : 500u) << "the tree has several levels by then";
    }
  }
}

using OutOfMemory = WithErrorLog;

TEST_F(OutOfMemory, EndsTheRunInOrderOrIsSurvived) {
  PlainLibrary library;
  support::ScopedEnv temporary("TMPDIR", dir_.path().c_str());
  TEST_ENABLESCRIPTINPUT = 1;
  const auto run = [](long n, const vexoCommandsInfo_t& commands) {
    server = {};
    orcObj_t orc = {};
    orc.bUsePwGenerate = 1;
    vexoOptionsInfo_t options = {};
    support::FedInput input("\n+0\nrman\nrman\nprod\n11:30+\n1 2\nO\ny\nq\n");
    support::Captured output;
    struck = false;
    countdown = n;
    const unsigned short rc = vexoProcessCommand(&orc, options, commands);
    countdown = -1;
    const string told = onlyOne && (rc == 10 || rc == 102 || rc == 2522) ? "QRB2522" : "";
    EXPECT_HOLDS(output.take(), told) << n;
    return rc;
  };
  EXPECT_EQ(65535, run(-1, {})) << "of a command that it does not know";
  vexoCommandsInfo_t commands = {};
  commands.syncdb = 1;
  std::set<int> seen;
  for (const bool single : {true, false}) {
    onlyOne = single;
    for (long n = 1; n == 1 || struck; ++n) {
      seen.insert(run(n, commands));
      const string where = std::to_string(n) + (single ? " alone" : " and all after it");
      ASSERT_FALSE(server.inTransaction || server.loggedOn) << where;
      ASSERT_EQ(0x3fcu, server.there & 0x3fc) << where << ": was not picked";
      ASSERT_EQ(0, std::popcount(kAll & ~server.there) % 3) << where << ": whole transactions";
      ASSERT_LT(n, 5000) << "there is no end";
    }
    EXPECT_EQ(1u, seen.erase(VLT_RC_NO_MATCH)) << "survived up to the failed deletion";
  }
  TEST_ENABLESCRIPTINPUT = 0;
  // The tree, the list, anything else, no temporary name, no room beside the spool file; and a list
  // that was left after a question that could not be shown whole.
  EXPECT_EQ((std::set<int>{10, 102, 300, 2522, 2531, 2533}), seen);
}

// The status of the whole program if the n-th allocation fails; -1 if it does not take so many.
int statusOf(string option, long n) {
  const pid_t child = ::fork();
  if (child == 0) {
    char query[] = "query", *arguments[] = {query, query, option.data(), nullptr};
    destroyNlsGlobalObject();
    countdown = n;
    const int rc = vexosyncMain(3, arguments);
    ::_exit(struck || environmentIsFull ? rc : 111);
  }
  int status = 0;
  EXPECT_EQ(child, __real_waitpid(child, &status, 0));
  EXPECT_TRUE(WIFEXITED(status)) << n;
  return WEXITSTATUS(status) == 111 ? -1 : WEXITSTATUS(status);
}

TEST_F(OutOfMemory, NeverLooksLikeSuccess) {
  support::Captured output, errors(STDERR_FILENO);
  const string option = "-vexo_opt=" + dir_.path("vexo.opt");
  std::set<int> seen;
  struck = false;
  onlyOne = true;
  for (long n = 1; !seen.contains(-1); ++n) seen.insert(statusOf(option, n));
  output.take();
  // The end; no catalog, no library (all was well until then), the codes 2522 and 2534, no trace.
  EXPECT_EQ((std::set<int>{-1, 98, 104, 218, 230, 255}), seen);
  environmentIsFull = true;
  EXPECT_EQ(255, statusOf(option, -1));
  environmentIsFull = false;
}

}  // namespace
