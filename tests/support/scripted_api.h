// scripted_api.h: the storage client library as a script of expected calls.
//
//   ScriptedApi api({
//       Step("vltBeginTxn", "7"),
//       Step("vltDeleteObj", "7 2 id=4711"),
//       Step("vltEndTxn", "7 1", VLT_RC_CHECK_REASON).fill<std::uint16_t>([](std::uint16_t& r) { r
//       = 2; })});
//   ... code under test, which finds the script through gVltApiObjP ...
//
// Every call of the library must be the next step, with its arguments. The first call that is not
// fails the test and names the step; from then on every call returns kOffScript. The destructor
// fails the test if steps are left over. There can be one script at a time.
//
// Arguments are written in order, separated by a blank: numbers in decimal, texts in single quotes
// (or null), and these records
//   VltDelInfo      id=NUMBER                VltInitExIn    node='' owner='' password=''
//   VltQueryBackup  'fs' 'high' 'low' owner=''  VltRcMsgIn  HANDLE RC FLAG
// All other pointers are left out; `fill` reaches them. "*" matches any arguments.
#ifndef TESTS_SUPPORT_SCRIPTED_API_H
#define TESTS_SUPPORT_SCRIPTED_API_H

#include <gtest/gtest.h>

#include <any>
#include <cstring>
#include <functional>

#include "api/vltapi.h"

namespace support {

inline constexpr std::int16_t kOffScript = 2999;

struct Step {
  explicit Step(std::string name, std::string arguments = "*", std::int16_t result = 0)
      : function(std::move(name)), args(std::move(arguments)), rc(result) {}

  // Lets `act` fill the record (or the first element) that the call's pointer to T points to. With
  // a const T, which the library only reads, the place for checks.
  template <typename T>
  Step&& fill(std::function<void(T&)> act) && {
    effects.emplace_back(std::move(act));
    return std::move(*this);
  }
  // For vltRCMsg and vltRCMsgEx: the text that the library gives for the code.
  Step&& text(std::string answer) && {
    effects.emplace_back(std::function<void(char&)>(
        [answer](char& first) { std::memcpy(&first, answer.c_str(), answer.size() + 1); }));
    effects.emplace_back(std::function<void(VltRcMsgOut&)>(
        [answer](VltRcMsgOut& out) { out.text[answer.copy(out.text, out.textSize - 1)] = '\0'; }));
    return std::move(*this);
  }

  std::string function, args;
  std::int16_t rc;
  std::vector<std::any> effects;
};

// The two calls with which the agent fetches the text of a code.
inline std::vector<Step> textSteps(const std::string& handle, int rc, const std::string& text) {
  const std::string code = handle + " " + std::to_string(rc);
  return {Step("vltRCMsgEx", code + " 1").text(text), Step("vltRCMsg", code).text(text)};
}

class ScriptedApi : public DVltApi {
 public:
  explicit ScriptedApi(std::vector<Step> steps = {}, const char* optFile = "")
      : DVltApi("", "", optFile, nullptr), steps_(std::move(steps)), before_(gVltApiObjP) {
#define VLT_CODE(op, args, ...) \
  m_fnvlt##op##P = [](auto... given) { return running_->answer("vlt" #op, given...); };
#define VLT_VOID(op, args, ...) \
  m_fnvlt##op##P = [](auto... given) { running_->answer("vlt" #op, given...); };
#include "api/vltentries.def"
    m_bvltSetUpDone = 0;
    running_ = this;
    gVltApiObjP = this;
  }
  ~ScriptedApi() {
    if (next_ < steps_.size() && !offScript_) {
      ADD_FAILURE() << "left over from " << where() << " on: " << show(steps_[next_]);
    }
    ClearPointers();
    running_ = nullptr;
    gVltApiObjP = before_;
  }
  ScriptedApi(const ScriptedApi&) = delete;
  ScriptedApi& operator=(const ScriptedApi&) = delete;

  int Setup() override { return 0; }
  int Cleanup() override { return 0; }

  void add(std::vector<Step> more) {
    for (Step& step : more) steps_.push_back(std::move(step));
  }

 private:
  template <typename... Args>
  std::int16_t answer(const char* function, Args... args) {
    std::string text;
    const auto append = [&text](const std::string& argument) {
      text += (text.empty() || argument.empty() ? "" : " ") + argument;
    };
    (append(described(args)), ...);
    const Step* step = match(function, text);
    if (step != nullptr) (applyAll(*step, args), ...);
    return step == nullptr ? kOffScript : step->rc;
  }

  static std::string described(const char* text) {
    return text == nullptr ? "null" : "'" + std::string(text) + "'";
  }
  static std::string described(const VltDelInfo* info) {
    return "id=" + std::to_string(api::toNumber(info->objId));
  }
  static std::string described(const VltInitExIn* in) {
    return "node=" + described(in->clientNodeName) + " owner=" + described(in->clientOwnerName) +
           " password=" + described(in->clientPassword);
  }
  static std::string described(const VltQueryBackup* query) {
    const VltObjName& name = *query->objName;
    return described(name.fileSpace) + " " + described(name.highLevel) + " " +
           described(name.lowLevel) + " owner=" + described(query->owner);
  }
  static std::string described(const VltRcMsgIn* in) {
    return described(in->handle) + " " + described(in->rc) + " " + described(in->withIdentifier);
  }
  template <typename Argument>
  static std::string described(Argument argument) {
    if constexpr (std::is_integral_v<Argument>) return std::to_string(argument);
    return "";
  }

  template <typename Argument>
  static void applyAll(const Step& step, Argument argument) {
    if constexpr (std::is_pointer_v<Argument>) {
      using Effect = std::function<void(std::remove_pointer_t<Argument>&)>;
      for (const std::any& effect : step.effects) {
        if (const Effect* act = std::any_cast<Effect>(&effect)) (*act)(*argument);
      }
    }
  }

  const Step* match(const char* function, const std::string& args) {
    if (offScript_) return nullptr;
    const Step* next = next_ < steps_.size() ? &steps_[next_] : nullptr;
    const bool same = next != nullptr && next->function == function;
    if (same && (next->args == "*" || next->args == args)) return &steps_[next_++];
    offScript_ = true;
    ADD_FAILURE() << where() << ": expected " << (next == nullptr ? "no further call" : show(*next))
                  << ", got " << show(Step(function, args));
    return nullptr;
  }

  std::string where() const {
    return "step " + std::to_string(next_ + 1) + " of " + std::to_string(steps_.size());
  }
  static std::string show(const Step& step) { return step.function + "(" + step.args + ")"; }

  static inline ScriptedApi* running_ = nullptr;
  std::vector<Step> steps_;
  std::size_t next_ = 0;
  bool offScript_ = false;
  DVltApi* before_;
};

}  // namespace support

#endif  // TESTS_SUPPORT_SCRIPTED_API_H
