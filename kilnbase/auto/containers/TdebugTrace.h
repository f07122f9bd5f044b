// The interface of a trace facility that is switched off: every call does nothing.
#pragma once

#include <kilnbase/export.h>

/// A function for the traces of a key.
using TdebugCallback = void (*)(char*);

/// A trace of one scope. Tracing is never on: callers ask `on()` and skip their output.
class KILNBASE_API TdebugTrace {
 public:
  /// Stored for the caller. Nothing here reads them.
  static unsigned short fsTraceLevel;
  static int fsExactTraceLevel;
  static char* fsTraceKey;
  static char* fsTraceFile;
  static char* fsCmdPath;
  static char* fsCallbackKey;
  static TdebugCallback fsCallback;

  /// The arguments are not looked at.
  TdebugTrace(short level, char* key, char* file);
  ~TdebugTrace();
  TdebugTrace(const TdebugTrace&) = default;
  TdebugTrace& operator=(const TdebugTrace&);

  int on() const;  ///< Always 0.

 private:
  static void signal_handler();
};

/// The registration of a function for the traces of a key. The function is never called.
class KILNBASE_API TdbgCbRegister {
 public:
  /// Stored for the caller. Nothing here reads them.
  static char* fsCbKeyInEnv;
  static int fsEnvVisited;

  /// The arguments are not looked at.
  TdbgCbRegister(char* key, TdebugCallback callback);
  TdbgCbRegister(const TdbgCbRegister&) = default;
  TdbgCbRegister& operator=(const TdbgCbRegister&);
};
