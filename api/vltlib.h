/* vltlib.h: the public interface of the storage client library, libApiDS64.so.
 *
 * The names of the functions and the codes that they are tested for are the library's. The layouts
 * of the records, the other codes and the other constants are this project's own reading: they were
 * designed from what the records must hold, not taken from the library. The sandbox's library is
 * built from this file, so the two agree; no test can say whether a site's library does.
 *
 * To use the library's own header instead: replace this file by one that includes it and gives its
 * types, constants and functions the names that are used here. What the compiler then refuses is
 * where the two differ; where it refuses a VLT_RECORD below, give it the numbers of the library.
 * api/vltrecords.cpp copies objects into records of our own; agent/session2.cpp,
 * utility/syncdb_listing.cpp and utility/syncdb_deletion.cpp fill the others.
 *
 * Plain C, self-contained: it includes nothing of this project, so that both sides of the interface
 * (our wrapper, and any library that implements it) can be built from it alone.
 *
 * Every record that has a version begins with `structVersion`. The caller sets it before the call,
 * for records that it passes in and for records that the library fills; the library refuses a
 * version that it does not know with VLT_RC_BAD_STRUCT_VERSION and touches nothing else.
 *
 * All texts are NUL-terminated. Records are owned by the caller; the library keeps no pointer into
 * them after the call, except VltDataBlk::buffer, which it fills during vltGetNextQObj only.
 * Functions return 0 (VLT_RC_OK) or one of the codes below, unless they say otherwise.
 */
#ifndef API_VLTLIB_H
#define API_VLTLIB_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Lengths of texts, in bytes, without the terminator ------------------------------------- */

#define VLT_MAX_NODE 64
#define VLT_MAX_OWNER 64
#define VLT_MAX_PASSWORD 64
#define VLT_MAX_FILESPACE 512
#define VLT_MAX_HIGHLEVEL 512
#define VLT_MAX_LOWLEVEL 256
#define VLT_MAX_PATH 1279
#define VLT_MAX_SERVER 64
#define VLT_MAX_POLICY 30
#define VLT_MAX_RC_TEXT 1024 /* longest text of a return code */

/* ---- Return codes --------------------------------------------------------------------------- */

#define VLT_RC_SERVER_UNREACHABLE (-50) /* no answer; trying again may help */
#define VLT_RC_OK 0
#define VLT_RC_NO_MATCH 2           /* no object matches, or the object is gone */
#define VLT_RC_WRONG_PASSWORD 51    /* the server refused the password, or none is stored */
#define VLT_RC_PASSWORD_EXPIRED 52  /* logged on, but only vltChangePW is accepted */
#define VLT_RC_UNKNOWN_NODE 53      /* the server does not know the node */
#define VLT_RC_NOT_AUTHORIZED 54    /* the node may not do this */
#define VLT_RC_FINISHED 121         /* the query has no further object */
#define VLT_RC_UNKNOWN_FORMAT 122   /* this object cannot be shown; the query goes on */
#define VLT_RC_MORE_DATA 2200       /* an object was returned, ask for the next */
#define VLT_RC_CHECK_REASON 2302    /* the transaction was aborted, see the reason */
#define VLT_RC_NOT_SET_UP 2401      /* vltSetUp has not succeeded in this process */
#define VLT_RC_BAD_HANDLE 2402      /* no session with this handle */
#define VLT_RC_BAD_STRUCT_VERSION 2403
#define VLT_RC_BAD_SEQUENCE 2404    /* call not allowed now (no query or transaction open, ...) */
#define VLT_RC_BAD_ARGUMENT 2405    /* a null pointer, a text too long, a value out of range */
#define VLT_RC_BUFFER_TOO_SMALL 2406
#define VLT_RC_TXN_LIMIT 2407       /* more objects than the server takes in one transaction */
#define VLT_RC_NOT_SUPPORTED 2408   /* this library does not offer the function */
#define VLT_RC_BAD_OPTION 2409      /* the options file or the option text cannot be read */
#define VLT_RC_STORE_FAILED 2410    /* the server could not read or write its own data */

/* ---- Constants ------------------------------------------------------------------------------ */

#define VLT_MULTITHREAD 1 /* vltSetUp and vltCleanUp */

#define VLT_QUERY_BACKUP 1 /* vltBeginQuery: backup objects */

#define VLT_OBJTYPE_FILE 1

#define VLT_STATE_ACTIVE 1
#define VLT_STATE_INACTIVE 2

#define VLT_DELETE_BACKUP_ID 2 /* vltDeleteObj: a backup object by its identifier */

#define VLT_VOTE_COMMIT 1
#define VLT_VOTE_ABORT 2

#define VLT_PASSWORD_PROMPT 0
#define VLT_PASSWORD_GENERATE 1

#define VLT_COMPRESSED 1 /* VltQryRespBackup::compressType; anything else: not compressed */

#define VLT_ENCRYPT_DES_56 4
#define VLT_ENCRYPT_AES_128 8
#define VLT_ENCRYPT_AES_256 16

#define VLT_CLIENT_KIND_USER 1
#define VLT_CLIENT_KIND_SCHEDULER 2
#define VLT_CLIENT_KIND_DATABASE_AGENT 3

/* ---- Versions ------------------------------------------------------------------------------- */

typedef struct {
  uint16_t version, release, level;
} VltApiVersion;

typedef struct {
  uint16_t structVersion; /* 2 */
  uint16_t version, release, level, subLevel;
} VltApiVersionEx;

/* The version of the program that calls, for the server's session display. */
typedef struct {
  uint16_t structVersion; /* 1 */
  uint16_t version, release, level, subLevel;
} VltAppVersion;

/* ---- Small shared records ------------------------------------------------------------------- */

typedef struct {
  uint32_t hi, lo;
} VltWord64; /* one 64-bit value: hi times 2^32, plus lo */

typedef struct {
  uint16_t year; /* 0 together with all other fields 0: no date */
  uint8_t month, day, hour, minute, second;
} VltDate;

typedef struct {
  char fileSpace[VLT_MAX_FILESPACE + 1]; /* begins with "/" */
  char highLevel[VLT_MAX_HIGHLEVEL + 1]; /* empty, or begins with "/" */
  char lowLevel[VLT_MAX_LOWLEVEL + 1];   /* begins with "/" */
  uint8_t objType;                       /* VLT_OBJTYPE_... */
} VltObjName;

/* A caller's buffer that a call fills or sends. */
typedef struct {
  uint16_t structVersion; /* 3 */
  uint32_t bufferLen;     /* bytes that `buffer` holds */
  uint32_t numBytes;      /* out: bytes used */
  void* buffer;
} VltDataBlk;

/* ---- Set-up and logon ----------------------------------------------------------------------- */

typedef struct {
  uint16_t structVersion;         /* 4 */
  uint8_t incExlCaseSensitive;    /* 1: include-exclude rules tell capitals from small letters */
  char vltiDir[VLT_MAX_PATH + 1]; /* directory of the library and its files */
  char vltiConfig[VLT_MAX_PATH + 1]; /* client options file; empty: the library's default */
  char vltiLog[VLT_MAX_PATH + 1];    /* directory of the library's error log */
  char logName[VLT_MAX_PATH + 1];    /* file name of that log */
  char** argv;                       /* the program's arguments, or null */
} VltEnvSetUp;

typedef struct {
  uint16_t structVersion;            /* 5 */
  const VltApiVersionEx* apiVersion; /* the version that the caller was built with */
  const char* clientNodeName;        /* null: the options file's node, else the host's name */
  const char* clientOwnerName;       /* null: no owner */
  const char* clientPassword;        /* null or empty: the stored password, where access is
                                        generate; with generate, a text given here is tried first
                                        and stored when it is right */
  const char* userName;              /* null: the node itself */
  const char* userPassword;
  const char* applicationType; /* shown by the server, for example "VEX Oracle SUN" */
  const char* configFile;      /* client options file of this session; null or empty: as set up */
  const char* options;         /* " -NAME=VALUE" words that override the options file, or null:
                                  -PASSWORDACCESS=PROMPT|GENERATE, -PASSWORDDIR=directory (the
                                  last option of the text, so that a directory may hold blanks) */
  uint8_t clientKind;          /* VLT_CLIENT_KIND_...: what the session is charged to */
  const VltAppVersion* appVersion; /* from structVersion 5 on; may be null */
} VltInitExIn;

typedef struct {
  uint16_t structVersion; /* 1 */
  uint16_t serverVersion, serverRelease, serverLevel, serverSubLevel;
} VltInitExOut;

/* Client options: of the process before logon (vltQueryCliOptions), of one session after it. */
typedef struct {
  uint16_t structVersion; /* 1 */
  char configFile[VLT_MAX_PATH + 1];
  char serverName[VLT_MAX_SERVER + 1];
  char serverAddress[VLT_MAX_SERVER + 1];
  char nodeName[VLT_MAX_NODE + 1];
  uint8_t compression;    /* 1: the client compresses what it sends */
  uint8_t passwordAccess; /* VLT_PASSWORD_... */
} VltOptions;

typedef struct {
  uint16_t structVersion; /* 1 */
  char serverHost[VLT_MAX_SERVER + 1];
  uint16_t serverPort;
  char serverType[VLT_MAX_SERVER + 1];
  uint16_t serverVersion, serverRelease, serverLevel, serverSubLevel;
  char nodeName[VLT_MAX_NODE + 1]; /* the sign-in id */
  char owner[VLT_MAX_OWNER + 1];
  char nodeType[VLT_MAX_SERVER + 1];
  char fileSpaceDelimiter, highLevelDelimiter;
  uint8_t compression;
  uint8_t backupDeleteAllowed; /* 1: the node may delete its backup objects */
  uint16_t maxObjPerTxn;       /* 0: no limit */
  char domainName[VLT_MAX_POLICY + 1];
  char policySetName[VLT_MAX_POLICY + 1];
} VltSessInfo;

/* ---- Queries -------------------------------------------------------------------------------- */

/* In the high- and the low-level name "*" matches any text and "?" any one character; the filespace
 * is compared literally. */
typedef struct {
  uint16_t structVersion; /* 2 */
  const VltObjName* objName;
  const char* owner; /* null or empty: any owner */
  uint8_t objState;  /* VLT_STATE_... */
  VltDate pitDate;   /* only objects inserted at or before it; no date: no bound */
} VltQueryBackup;

/* One backup object; the caller sets structVersion to 8 before the first call of the query. */
typedef struct {
  uint16_t structVersion; /* 8 */
  uint8_t objState;       /* VLT_STATE_... */
  VltObjName objName;
  char owner[VLT_MAX_OWNER + 1];
  VltWord64 objId; /* unique on this server, names this one copy */
  VltDate insDate;
  VltWord64 sizeEstimate; /* bytes */
  uint8_t compressType;
  uint8_t encryptionType; /* VLT_ENCRYPT_... bits, 0: none */
  uint8_t clientDeduplicated;
} VltQryRespBackup;

/* ---- Transactions --------------------------------------------------------------------------- */

typedef struct {
  uint16_t structVersion; /* 1 */
  VltWord64 objId;
} VltDelInfo;

/* ---- Return-code texts, server log ---------------------------------------------------------- */

typedef struct {
  uint16_t structVersion; /* 1 */
  uint32_t handle;
  int16_t rc;
  uint8_t withIdentifier; /* 1: the text begins with its identifier */
} VltRcMsgIn;

typedef struct {
  uint16_t structVersion; /* 1 */
  char* text;             /* the caller's buffer */
  uint32_t textSize;      /* its size; a longer text is cut */
} VltRcMsgOut;

typedef struct {
  uint16_t structVersion; /* 1 */
  uint8_t severity;       /* 1 information, 2 warning, 3 error, 4 severe */
  const char* text;
  const char* applicationType;
} VltLogIn;

typedef struct {
  uint16_t structVersion; /* 1 */
} VltLogOut;

/* ---- Records of the functions that move data, manage filespaces and rights ------------------ */

typedef struct {
  uint16_t structVersion; /* 1 */
  uint32_t numObjIds;
  const VltWord64* objIds;
} VltGetList;

typedef struct {
  uint16_t structVersion; /* 1 */
  uint32_t handle;
} VltHandleIn;

typedef struct {
  uint16_t structVersion; /* 1 */
  VltWord64 totalBytes;
  uint16_t reason;
} VltTotalsOut;

typedef struct {
  uint16_t structVersion; /* 1 */
  uint32_t handle;
  uint8_t vote; /* VLT_VOTE_... */
} VltEndTxnIn;

typedef struct {
  uint16_t structVersion; /* 1 */
  char owner[VLT_MAX_OWNER + 1];
  VltWord64 sizeEstimate;
  uint8_t compressType;
} VltObjAttr;

typedef struct {
  uint16_t structVersion; /* 1 */
  char managementClass[VLT_MAX_POLICY + 1];
} VltBindKey;

typedef struct {
  uint16_t structVersion; /* 1 */
  char fileSpace[VLT_MAX_FILESPACE + 1];
  char fileSpaceType[33];
  VltWord64 capacity, occupancy;
} VltFsData;

typedef struct {
  uint16_t structVersion; /* 1 */
  uint32_t handle;
  uint8_t groupAction;
  VltWord64 leaderId;
  uint32_t numMembers;
  const VltWord64* members;
} VltGroupIn;

typedef struct {
  uint16_t structVersion; /* 1 */
  uint32_t handle;
  VltObjName objName;
  char newHighLevel[VLT_MAX_HIGHLEVEL + 1];
  char newLowLevel[VLT_MAX_LOWLEVEL + 1];
} VltRenameIn;

typedef struct {
  uint16_t structVersion; /* 1 */
  uint32_t ruleNumber;
  VltObjName objName;
  char nodeName[VLT_MAX_NODE + 1];
  char owner[VLT_MAX_OWNER + 1];
} VltAccessRule;

/* ---- Layouts -------------------------------------------------------------------------------- */

/* A record that another compiler lays out differently is refused here, and not at a site: offsets
 * of members and the size, for every record that the program exchanges. */
#ifdef __cplusplus
#define VLT_ASSERT(condition) static_assert(condition, #condition)
#else
#define VLT_ASSERT(condition) _Static_assert(condition, #condition)
#endif
#define VLT_RECORD(record, member, offset, size)    \
  VLT_ASSERT(offsetof(record, member) == (offset)); \
  VLT_ASSERT(sizeof(record) == (size))

#if UINTPTR_MAX > 0xFFFFFFFFu /* the library is a 64-bit one */
VLT_RECORD(VltApiVersion, level, 4, 6);
VLT_RECORD(VltApiVersionEx, subLevel, 8, 10);
VLT_RECORD(VltAppVersion, subLevel, 8, 10);
VLT_RECORD(VltWord64, lo, 4, 8);
VLT_RECORD(VltDate, second, 6, 8);
VLT_RECORD(VltObjName, objType, 1283, 1284);
VLT_RECORD(VltDataBlk, buffer, 16, 24);
VLT_RECORD(VltEnvSetUp, argv, 5128, 5136);
VLT_RECORD(VltEnvSetUp, logName, 3843, 5136);
VLT_RECORD(VltInitExIn, apiVersion, 8, 96);
VLT_RECORD(VltInitExIn, clientPassword, 32, 96);
VLT_RECORD(VltInitExIn, clientKind, 80, 96);
VLT_RECORD(VltInitExIn, appVersion, 88, 96);
VLT_RECORD(VltInitExOut, serverSubLevel, 8, 10);
VLT_RECORD(VltOptions, nodeName, 1412, 1480);
VLT_RECORD(VltOptions, passwordAccess, 1478, 1480);
VLT_RECORD(VltSessInfo, nodeName, 144, 408);
VLT_RECORD(VltSessInfo, maxObjPerTxn, 344, 408);
VLT_RECORD(VltSessInfo, policySetName, 377, 408);
VLT_RECORD(VltQueryBackup, owner, 16, 40);
VLT_RECORD(VltQueryBackup, pitDate, 26, 40);
VLT_RECORD(VltQryRespBackup, objName, 3, 1380);
VLT_RECORD(VltQryRespBackup, objId, 1352, 1380);
VLT_RECORD(VltQryRespBackup, insDate, 1360, 1380);
VLT_RECORD(VltQryRespBackup, sizeEstimate, 1368, 1380);
VLT_RECORD(VltQryRespBackup, clientDeduplicated, 1378, 1380);
VLT_RECORD(VltDelInfo, objId, 4, 12);
VLT_RECORD(VltRcMsgIn, withIdentifier, 10, 12);
VLT_RECORD(VltRcMsgOut, textSize, 16, 24);
#endif

/* ---- The 45 entry points, in alphabetical order --------------------------------------------- */

int16_t vltBeginGetData(uint32_t handle, uint8_t waitForMedia, const VltGetList* list);

/* Starts a query; objects come from vltGetNextQObj until it returns VLT_RC_FINISHED or
 * VLT_RC_NO_MATCH, then vltEndQuery. One query at a time in a session. */
int16_t vltBeginQuery(uint32_t handle, uint8_t queryType, const VltQueryBackup* query);

/* Starts a transaction. One at a time in a session; nothing is changed before vltEndTxn commits. */
int16_t vltBeginTxn(uint32_t handle);

int16_t vltBindMC(uint32_t handle, const VltObjName* objName, VltBindKey* bindKey);

/* Replaces the password of the session's node. Also ends the expired state of the session. */
int16_t vltChangePW(uint32_t handle, const char* oldPassword, const char* newPassword);

/* Undoes vltSetUp: ends every session and frees what the library holds. */
int16_t vltCleanUp(uint8_t multithread);

/* Makes the 8-byte cipher key that belongs to `text`; the same text gives the same key. */
void vltCreateDesKeyEx(const char* text, uint32_t key[2]);

/* Deciphers one block of 8 bytes; `in` and `out` may be the same. */
void vltDecryptEx(const uint32_t key[2], const uint8_t in[8], uint8_t out[8]);

int16_t vltDeleteAccess(uint32_t handle, uint32_t ruleNumber);
int16_t vltDeleteFS(uint32_t handle, const char* fileSpace);

/* Deletes one object within the open transaction. VLT_RC_NO_MATCH: it is gone. VLT_RC_TXN_LIMIT:
 * the transaction already holds maxObjPerTxn objects. */
int16_t vltDeleteObj(uint32_t handle, uint8_t deleteType, const VltDelInfo* info);

/* Enciphers one block of 8 bytes; `in` and `out` may be the same. */
void vltEncryptEx(const uint32_t key[2], const uint8_t in[8], uint8_t out[8]);

int16_t vltEndGetData(uint32_t handle);
int16_t vltEndGetDataEx(const VltHandleIn* in, VltTotalsOut* out);
int16_t vltEndGetObj(uint32_t handle);
int16_t vltEndQuery(uint32_t handle);
int16_t vltEndSendObj(uint32_t handle);
int16_t vltEndSendObjEx(const VltHandleIn* in, VltTotalsOut* out);

/* Ends the transaction with a vote. A commit that the server turns into an abort returns
 * VLT_RC_CHECK_REASON with the code of the cause in `*reason`; else `*reason` is 0. */
int16_t vltEndTxn(uint32_t handle, uint8_t vote, uint16_t* reason);
int16_t vltEndTxnEx(const VltEndTxnIn* in, VltTotalsOut* out);

int16_t vltGetData(uint32_t handle, VltDataBlk* block);

/* The next object of the query. `block` (structVersion 3) points at a VltQryRespBackup in a
 * buffer of at least that size. VLT_RC_MORE_DATA: it holds an object. VLT_RC_UNKNOWN_FORMAT: this
 * one cannot be shown, go on. VLT_RC_FINISHED: no further object. VLT_RC_NO_MATCH: none at all. */
int16_t vltGetNextQObj(uint32_t handle, VltDataBlk* block);

int16_t vltGetObj(uint32_t handle, const VltWord64* objId, VltDataBlk* block);
int16_t vltGroupHandler(const VltGroupIn* in, VltTotalsOut* out);
int16_t vltInit(uint32_t* handle, const VltApiVersion* apiVersion, const char* nodeName,
                const char* ownerName, const char* password, const char* applicationType,
                const char* configFile, const char* options);

/* Logs on. Returns the session's handle, never 0, with VLT_RC_OK and VLT_RC_PASSWORD_EXPIRED; in
 * every other case `*handle` is 0 and no session exists. `out` may be null. */
int16_t vltInitEx(uint32_t* handle, const VltInitExIn* in, VltInitExOut* out);

int16_t vltLogEventEx(uint32_t handle, const VltLogIn* in, VltLogOut* out);
int16_t vltLogMessage(uint32_t handle, uint8_t severity, const char* text);
int16_t vltQueryAccess(uint32_t handle, VltAccessRule** rules, uint16_t* count);

/* The library's own version; they need no set-up. */
void vltQueryApiVersion(VltApiVersion* version);
void vltQueryApiVersionEx(VltApiVersionEx* version);

int16_t vltQueryCliOptions(VltOptions* options);
int16_t vltQuerySessInfo(uint32_t handle, VltSessInfo* info);
int16_t vltQuerySessOptions(uint32_t handle, VltOptions* options);
int16_t vltRegisterFS(uint32_t handle, const VltFsData* fileSpace);
int16_t vltRenameObj(const VltRenameIn* in, VltTotalsOut* out);

/* The text of a return code, with its identifier ("ZYL2302E ..."), without a line end. `text` has
 * room for VLT_MAX_RC_TEXT + 1 bytes. The handle may be 0. VLT_RC_BAD_ARGUMENT: unknown code; then
 * the text says so. */
int16_t vltRCMsg(uint32_t handle, int16_t rc, char* text);
int16_t vltRCMsgEx(const VltRcMsgIn* in, VltRcMsgOut* out);

int16_t vltSetAccess(uint32_t handle, const VltAccessRule* rule);
int16_t vltSendData(uint32_t handle, const VltDataBlk* block);
int16_t vltSendObj(uint32_t handle, const VltObjName* objName, const VltObjAttr* attributes,
                   const VltDataBlk* block);

/* Prepares the library for this process; once, before any other call except the version's. */
int16_t vltSetUp(uint8_t multithread, const VltEnvSetUp* envSetUp);

/* Ends a session; an open transaction is aborted. */
int16_t vltTerminate(uint32_t handle);

int16_t vltUpdateFS(uint32_t handle, const VltFsData* fileSpace);
int16_t vltUpdateObj(uint32_t handle, const VltObjName* objName, const VltObjAttr* attributes);

#ifdef __cplusplus
}
#endif

#endif /* API_VLTLIB_H */
