#include "core/prefs/password_hash.h"

#include <sodium.h>

#include <algorithm>
#include <string>

namespace {

const char kSchemePrefix[] = "$argon2id$";

// Costs of a new hash: libsodium's interactive level (64 MiB, 2 passes),
// a fraction of a second, paid once per unlock.
const unsigned long long kOpsLimit = crypto_pwhash_OPSLIMIT_INTERACTIVE;
const size_t kMemLimit = crypto_pwhash_MEMLIMIT_INTERACTIVE;

bool SodiumReady()
{
    static const bool ready = sodium_init() >= 0;
    return ready;
}

// Equal-length digests so that the comparison of an old plain value takes
// the same time whatever the typed text.
bool PlainEquals(const std::string& a, const std::string& b)
{
    unsigned char da[crypto_generichash_BYTES];
    unsigned char db[crypto_generichash_BYTES];
    crypto_generichash(da, sizeof da, reinterpret_cast<const unsigned char*>(a.data()), a.size(), nullptr, 0);
    crypto_generichash(db, sizeof db, reinterpret_cast<const unsigned char*>(b.data()), b.size(), nullptr, 0);
    return sodium_memcmp(da, db, sizeof da) == 0;
}

}  // namespace

wxString HashPassword(const wxString& password)
{
    if (!SodiumReady())
        return wxString();
    const std::string utf8 = password.utf8_string();
    char out[crypto_pwhash_STRBYTES];
    if (crypto_pwhash_str_alg(out, utf8.data(), utf8.size(), kOpsLimit, kMemLimit, crypto_pwhash_ALG_ARGON2ID13) != 0)
        return wxString();
    return wxString::FromUTF8(out);
}

bool IsPasswordHash(const wxString& stored)
{
    return stored.StartsWith(kSchemePrefix);
}

bool IsCheckablePassword(const wxString& stored)
{
    if (stored.empty())
        return false;
    if (!IsPasswordHash(stored))
        return true;
    const std::string hash = stored.utf8_string();
    // needs_rehash reads the whole text (costs, salt, hash) and says -1 when
    // it is not a hash at all.
    return SodiumReady() && hash.size() < crypto_pwhash_STRBYTES &&
           crypto_pwhash_str_needs_rehash(hash.c_str(), kOpsLimit, kMemLimit) != -1;
}

PasswordCheck CheckPassword(const wxString& typed, const wxString& stored)
{
    if (stored.empty() || !SodiumReady())
        return PasswordCheck::Wrong;
    const std::string utf8 = typed.utf8_string();
    if (!IsPasswordHash(stored))
        return PlainEquals(utf8, stored.utf8_string()) ? PasswordCheck::MatchNeedsUpgrade : PasswordCheck::Wrong;
    const std::string hash = stored.utf8_string();
    if (hash.size() >= crypto_pwhash_STRBYTES)
        return PasswordCheck::Wrong;
    if (crypto_pwhash_str_verify(hash.c_str(), utf8.data(), utf8.size()) != 0)
        return PasswordCheck::Wrong;
    return crypto_pwhash_str_needs_rehash(hash.c_str(), kOpsLimit, kMemLimit) != 0 ? PasswordCheck::MatchNeedsUpgrade
                                                                                   : PasswordCheck::Match;
}

int UnlockRetryDelayMs(int failures)
{
    if (failures <= 0)
        return 0;
    return 500 << std::min(failures - 1, 4);
}
