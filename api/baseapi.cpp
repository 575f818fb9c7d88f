// baseapi.cpp: name and timing of a client API, see baseapi.h.
#include "api/baseapi.h"

#include "common/ut/agttrc.h"
#include "common/ut/result.h"
#include "common/ut/strutil.h"

DBaseApi::DBaseApi() : DBaseApi("undefined") {}

DBaseApi::DBaseApi(const char* apiName) {
  ut::ignoreResult(ut::copyText(apiName_, apiName), "a name for traces");
}

const char* DBaseApi::GetApiName() const { return apiName_; }

void DBaseApi::StartApiCall(DBaseApiStatus* status) {
  status->insideApiCall = 1;
  status->startTimer();
}

void DBaseApi::EndApiCall(DBaseApiStatus* status) {
  status->insideApiCall = 0;
  status->endTimer();
  const long elapsed = status->getElapsedMs();
  status->totalTime += static_cast<double>(elapsed);
  TRACE(TR_PERFORMANCE, "Elapsed milliseconds %ld, for %s Api call \n", elapsed, apiName_);
  TRACE(TR_API, "Exit %s, elapsed milliseconds %ld, total time %.0f for %s Apis \n",
        "DBaseApi::EndApiCall()", elapsed, status->totalTime, apiName_);
}

void DBaseApi::EndApiCall(DBaseApiStatus* status, const char* apiName) {
  status->insideApiCall = 0;
  status->endTimer();
  const double elapsed = status->getElapsedSec();
  status->totalTime += elapsed;
  TRACE(TR_API, "Exit %s, elapsed seconds %0.f, total time %.0f for %s Apis \n",
        "DBaseApi::EndApiCall()", elapsed, status->totalTime, apiName);
}

void DBaseApi::LogApiStatus([[maybe_unused]] DBaseApiStatus* status) {
  TRACE(TR_PERFORMANCE, "Performance stats: %.0f seconds spent in %s API calls\n",
        status->totalTime, apiName_);
}
