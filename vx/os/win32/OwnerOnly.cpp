#include <utility>

#include <vx/os/win32/Handle.h>
#include <vx/os/win32/OwnerOnly.h>

namespace vxOS {

namespace {

std::unique_ptr<std::byte[]> informationOf(HANDLE process, TOKEN_INFORMATION_CLASS kind) {
  HANDLE opened = nullptr;
  OpenProcessToken(process, TOKEN_QUERY, &opened);
  const Handle token(opened);
  DWORD size = 0;
  GetTokenInformation(token.get(), kind, nullptr, 0, &size);
  auto information = std::make_unique<std::byte[]>(size);
  if (GetTokenInformation(token.get(), kind, information.get(), size, &size) == 0) return nullptr;
  return information;
}

}  // namespace

std::unique_ptr<std::byte[]> userOf(HANDLE process) {
  return informationOf(process, TokenUser);
}

std::unique_ptr<std::byte[]> currentUser() {
  return userOf(GetCurrentProcess());
}

std::unique_ptr<std::byte[]> ownerOfNewFiles() {
  return informationOf(GetCurrentProcess(), TokenOwner);
}

namespace {

// The list that gives the user all rights. Null when the system refuses.
std::unique_ptr<std::byte[]> userList() {
  const auto user = currentUser();
  if (user == nullptr) return nullptr;
  PSID id = reinterpret_cast<const TOKEN_USER*>(user.get())->User.Sid;
  const auto size = static_cast<DWORD>(sizeof(ACL) + sizeof(ACCESS_ALLOWED_ACE) + GetLengthSid(id));
  auto memory = std::make_unique<std::byte[]>(size);
  auto* list = reinterpret_cast<ACL*>(memory.get());
  const bool isComplete = InitializeAcl(list, size, ACL_REVISION) != 0 &&
                          AddAccessAllowedAce(list, ACL_REVISION, FILE_ALL_ACCESS, id) != 0;
  return isComplete ? std::move(memory) : nullptr;
}

}  // namespace

OwnerOnly::OwnerOnly() : list_(userList()) {
  if (list_ == nullptr) return;
  InitializeSecurityDescriptor(&descriptor_, SECURITY_DESCRIPTOR_REVISION);
  SetSecurityDescriptorDacl(&descriptor_, TRUE, reinterpret_cast<ACL*>(list_.get()), FALSE);
  SetSecurityDescriptorControl(&descriptor_, SE_DACL_PROTECTED, SE_DACL_PROTECTED);
}

}  // namespace vxOS
