#include <kilnbase/auto/containers/TdebugTrace.h>

constinit unsigned short TdebugTrace::fsTraceLevel = 0;
constinit int TdebugTrace::fsExactTraceLevel = 0;
constinit char* TdebugTrace::fsTraceKey = nullptr;
constinit char* TdebugTrace::fsTraceFile = nullptr;
constinit char* TdebugTrace::fsCmdPath = nullptr;
constinit char* TdebugTrace::fsCallbackKey = nullptr;
constinit TdebugCallback TdebugTrace::fsCallback = nullptr;

constinit char* TdbgCbRegister::fsCbKeyInEnv = nullptr;
constinit int TdbgCbRegister::fsEnvVisited = 0;

TdebugTrace::TdebugTrace(short, char*, char*) {}
TdebugTrace::~TdebugTrace() {}
TdebugTrace& TdebugTrace::operator=(const TdebugTrace&) {
  return *this;
}
int TdebugTrace::on() const {
  return 0;
}
void TdebugTrace::signal_handler() {}

TdbgCbRegister::TdbgCbRegister(char*, TdebugCallback) {}
TdbgCbRegister& TdbgCbRegister::operator=(const TdbgCbRegister&) {
  return *this;
}
