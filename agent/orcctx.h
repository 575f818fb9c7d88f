// orcctx.h: orcObj_t, the context of one run.
//
// The entry code creates one, zero-filled, and passes it down by pointer for the whole run. All
// texts are terminated.
#ifndef AGENT_ORCCTX_H
#define AGENT_ORCCTX_H

#include <cstddef>
#include <cstdint>

inline constexpr std::size_t kOptionSize = 512;
inline constexpr std::size_t kMessageSize = 1025;
inline constexpr std::size_t kPasswordSize = 65;
inline constexpr std::size_t kNodeSize = 65;

struct orcObj_t {
  std::uint32_t vltHandle;      // storage session, 0 while none is open
  std::uint16_t maxObjPerTxn;   // of the session; 0: no limit
  std::int16_t apiSetUp;        // 1: the library was set up and must be cleaned up
  std::int32_t bUsePwGenerate;  // 1: the library keeps the node's password
  std::int32_t clientType;      // handed to the message system

  // As the storage server knows the session; empty before the logon.
  char sessionNode[kNodeSize];
  char sessionOwner[kNodeSize];

  // Options, in the order of the options file's keyword table.
  char VLTI_DIR[kOptionSize];
  char VLTI_LOG[kOptionSize];
  char VLTI_ORC_DIR[kOptionSize];
  char VLTI_ORC_CONFIG[kOptionSize];
  char VEXO_AVG_SIZE[kOptionSize];
  char VEXO_FS[kOptionSize];
  char VEXO_NODE[kOptionSize];
  char VEXO_OWNER[kOptionSize];
  char VEXO_PSWDPATH[kOptionSize];
  char VEXO_TRACE_MAX[kOptionSize];
  char VEXO_TRACE_FILE[kOptionSize];
  char VEXO_TRACE_FLAGS[kOptionSize];
  char VEXO_MGMT_CLASS_2[kOptionSize];
  char VEXO_MGMT_CLASS_3[kOptionSize];
  char VEXO_MGMT_CLASS_4[kOptionSize];
  char VEXO_NUM_BUFFERS[kOptionSize];
  char VEXO_DATE_FORMAT[kOptionSize];
  char VEXO_TIME_FORMAT[kOptionSize];
  char VEXO_NUM_FORMAT[kOptionSize];
  char VEXO_LANGUAGE[kOptionSize];
  char VEXO_TEST_FLAGS[kOptionSize];
  char VEXO_ENABLESCRIPTINPUT[kOptionSize];

  char apiOptions[kMessageSize];       // handed to the library at logon
  char lastErrorMsg[kMessageSize];     // the latest failure, as it was logged
  std::int32_t ownFailure;             // 1: that text is the agent's own, not the library's
  char legacyPassword[kPasswordSize];  // from the legacy password file, else empty
  std::int32_t noNodeNoOwner;          // 1: the options name neither a node nor an owner
};

#endif  // AGENT_ORCCTX_H
