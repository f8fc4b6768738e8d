#include "test_support.h"

#include <string>

#include <windows.h>

#include <aclapi.h>
#include <sddl.h>

namespace {

std::string UserSid()
{
    HANDLE token = nullptr;
    if (!::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, &token))
        return {};
    DWORD size = 0;
    ::GetTokenInformation(token, TokenUser, nullptr, 0, &size);
    std::string buffer(size, '\0'), sid;
    if (size && ::GetTokenInformation(token, TokenUser, buffer.data(), size, &size)) {
        char* text = nullptr;
        if (::ConvertSidToStringSidA(reinterpret_cast<TOKEN_USER*>(buffer.data())->User.Sid, &text)) {
            sid = text;
            ::LocalFree(text);
        }
    }
    ::CloseHandle(token);
    return sid;
}

}  // namespace

bool IsPrivateFile(const wxString& path)
{
    PACL dacl = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (::GetNamedSecurityInfoW(path.wc_str(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr, &dacl,
                                nullptr, &descriptor) != ERROR_SUCCESS)
        return false;
    SECURITY_DESCRIPTOR_CONTROL control = 0;
    DWORD revision = 0;
    bool ok = dacl && ::GetSecurityDescriptorControl(descriptor, &control, &revision) && (control & SE_DACL_PROTECTED);
    const std::string user = UserSid();
    for (DWORD i = 0; ok && i < dacl->AceCount; ++i) {
        void* ace = nullptr;
        ok = ::GetAce(dacl, i, &ace) && static_cast<ACE_HEADER*>(ace)->AceType == ACCESS_ALLOWED_ACE_TYPE;
        char* sid = nullptr;
        ok = ok && ::ConvertSidToStringSidA(&static_cast<ACCESS_ALLOWED_ACE*>(ace)->SidStart, &sid) && user == sid;
        ::LocalFree(sid);
    }
    ok = ok && dacl->AceCount > 0;
    ::LocalFree(descriptor);
    return ok;
}

void MakeReadableByAll(const wxString& path)
{
    const std::string sddl = "D:(A;;FA;;;" + UserSid() + ")(A;;FR;;;WD)";
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (::ConvertStringSecurityDescriptorToSecurityDescriptorA(sddl.c_str(), SDDL_REVISION_1, &descriptor, nullptr)) {
        ::SetFileSecurityW(path.wc_str(), DACL_SECURITY_INFORMATION, descriptor);
        ::LocalFree(descriptor);
    }
}
