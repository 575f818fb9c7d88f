// baseapi.h: the base of a client API's wrapper: its name, the timing of its calls, and a holder
// for the first failure's code.
#ifndef API_BASEAPI_H
#define API_BASEAPI_H

#include "common/ut/timeutil.h"

// Filled by DVltApi::Init when it fails.
using RC_TYPE = unsigned int;
inline constexpr RC_TYPE kRcTypeDirectory = 1;  // a directory could not be determined
inline constexpr RC_TYPE kRcTypeSetUp = 2;      // vltSetUp failed

// Timing of the calls of one API: a stopwatch for the call that runs, and the total.
class DBaseApiStatus : public DIfcTimeUtil {
 public:
  double totalTime = 0;   // of all calls; in the unit that EndApiCall adds
  int insideApiCall = 0;  // 1 while a call runs
};

// The base of an API wrapper. No class of the hierarchy has a virtual destructor: never delete a
// wrapper through a pointer to its base.
class DBaseApi {
 public:
  DBaseApi();
  explicit DBaseApi(const char* apiName);

  // Loads and unloads the API. Both return 0 or a code.
  virtual int Setup() = 0;
  virtual int Cleanup() = 0;
  // Prepares the loaded API for this process, and undoes that.
  virtual int Init(DBaseApiStatus* status, RC_TYPE* rcType) = 0;
  virtual int Term(DBaseApiStatus* status) = 0;

  const char* GetApiName() const;

  // Every call of the API is made between these two.
  static void StartApiCall(DBaseApiStatus* status);
  // Adds the call's milliseconds to the total.
  void EndApiCall(DBaseApiStatus* status);
  // Adds the call's seconds to the total. Not used by the wrappers.
  static void EndApiCall(DBaseApiStatus* status, const char* apiName);

  // Traces the total. The line says seconds, but the wrappers add milliseconds. Kept on purpose,
  // pinned by Wrapper.PassesArgumentsAndCodesUnchanged.
  void LogApiStatus(DBaseApiStatus* status);

 protected:
  char apiName_[24];
};

// An integer that keeps the first non-zero value assigned to it.
class CFirstFailureRc {
 public:
  CFirstFailureRc(int rc) : rc_(rc) {}
  CFirstFailureRc(const CFirstFailureRc&) = default;
  CFirstFailureRc& operator=(int rc) {
    if (rc_ == 0) rc_ = rc;
    return *this;
  }
  CFirstFailureRc& operator=(const CFirstFailureRc& other) { return *this = other.rc_; }
  operator int() const { return rc_; }

 private:
  int rc_;
};

#endif  // API_BASEAPI_H
