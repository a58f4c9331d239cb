// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/IpEvidence.h"

#include "client/model/Contains.h"

#include <algorithm>

// Over which of two DHCP interfaces an answer came is not known before both have answered.
void IpBefore::hear(int question, const CardIp& answer)
{
    senders.insert(answer.address);
    leases.hear(question, answer);
    if (!now) {
        return;
    }
    const bool isLeased = now->mode == IpMode::dhcp && leases.areAll(question, answer, {});
    audible = audible || isLeased || contains(addressesOf(*now), answer.address);
}

IpEvidence::IpEvidence(InterfaceConfig newWanted, IpBefore newBefore)
    : wanted(std::move(newWanted)), before(std::move(newBefore))
{
}

void IpEvidence::hear(int question, const CardIp& answer)
{
    leases.hear(question, answer);
    const InterfaceConfig* found = answer.configuration.find(wanted.name);
    if (found == nullptr || isContrary(question, answer)) {
        firstSilent.reset();
        return;
    }
    seen = *found;
    if (seen != wanted) {
        firstSilent.reset();
        return;
    }
    applied = applied || isProof(question, answer);
    firstSilent = firstSilent.value_or(question);
    lastSilent = std::max(lastSilent, question); // answers need not come in the order of their questions
}

// What the interface had, and shall have no more.
std::vector<std::string> IpEvidence::formerAddresses() const
{
    std::vector<std::string> former = before.now ? addressesOf(*before.now) : std::vector<std::string>();
    std::erase(former, wanted.address.value_or(""));
    return former;
}

bool IpEvidence::isFromFormer(const CardIp& answer) const
{
    return contains(formerAddresses(), answer.address);
}

// The network has not followed. A lease may be the former address again, which then proves nothing either way.
bool IpEvidence::isContrary(int question, const CardIp& answer) const
{
    return (isFromFormer(answer) && wanted.mode != IpMode::dhcp) || leases.areTooMany(question, answer);
}

bool IpEvidence::isProof(int question, const CardIp& answer) const
{
    if (wanted.mode == IpMode::fixed) {
        return wanted.address == answer.address && !isOfAnother(answer);
    }
    // An address that the card states is that of its other interface: of a lease it states nothing.
    return wanted.mode == IpMode::dhcp && !isSentAsStated(answer) && !isFromFormer(answer) &&
           (isNewLease(answer) || leases.areAll(question, answer, formerAddresses()));
}

// The card may have sent it over its other interface, which says that it has the same address.
bool IpEvidence::isOfAnother(const CardIp& answer) const
{
    return std::ranges::any_of(answer.configuration.interfaces, [&](const InterfaceConfig& one) {
        return one.name != wanted.name && contains(addressesOf(one), answer.address);
    });
}

// The lease of another DHCP interface was heard before; unless nobody listened.
bool IpEvidence::isNewLease(const CardIp& answer) const
{
    return before.now && !before.senders.contains(answer.address);
}

bool IpEvidence::isSilent() const
{
    return firstSilent && lastSilent - *firstSilent + 1 >= enoughQuestions;
}

Proof IpEvidence::proof() const
{
    if (applied) {
        return Proof::applied;
    }
    if (!isSilent()) {
        return Proof::none;
    }
    return wanted.mode == IpMode::disabled && before.audible ? Proof::applied : Proof::stored;
}

// What can be heard is waited for.
bool IpEvidence::isEnough() const
{
    const Proof now = proof();
    return now == Proof::applied || (now == Proof::stored && !before.audible);
}
