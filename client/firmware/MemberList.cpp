// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/firmware/MemberList.h"

#include <algorithm>
#include <utility>

namespace
{

constexpr std::uint64_t digits = 0x7F; // of a number in each byte, the least first
constexpr std::uint64_t goesOn = 0x80;

// Trusts the bytes, which nobody but this list has written.
class Reader
{
public:
    explicit Reader(const std::deque<char>::const_iterator& start) : at(start) {}

    std::uint64_t number()
    {
        std::uint64_t result = 0;
        std::uint64_t byte = goesOn;
        for (unsigned shift = 0; (byte & goesOn) != 0; shift += 7) {
            byte = static_cast<unsigned char>(*at++);
            result |= (byte & digits) << shift;
        }
        return result;
    }

    // Makes the text before it this one.
    void text(std::string& before)
    {
        before.resize(static_cast<std::size_t>(number()));
        const auto end = at + static_cast<std::ptrdiff_t>(number());
        before.append(at, end);
        at = end;
    }

private:
    std::deque<char>::const_iterator at;
};

} // namespace

void MemberList::putNumber(std::uint64_t number)
{
    for (; number > digits; number >>= 7) {
        bytes.push_back(static_cast<char>((number & digits) | goesOn));
    }
    bytes.push_back(static_cast<char>(number));
}

void MemberList::putText(const std::string& before, const std::string& text)
{
    const auto rest = std::mismatch(text.begin(), text.end(), before.begin(), before.end()).first;
    putNumber(static_cast<std::uint64_t>(rest - text.begin()));
    putNumber(static_cast<std::uint64_t>(text.end() - rest));
    bytes.insert(bytes.end(), rest, text.end());
}

void MemberList::add(const ArchiveMember& member)
{
    putText(last.path, member.path);
    putText(last.target, member.target);
    putNumber(static_cast<std::uint64_t>(member.kind));
    putNumber(member.setsId ? 1 : 0);
    putNumber(static_cast<std::uint64_t>(member.size));
    last = member;
    ++count;
}

void MemberList::forEach(const std::function<void(const ArchiveMember&)>& visit) const
{
    Reader reader(bytes.begin());
    ArchiveMember member;
    for (std::size_t index = 0; index < count; ++index) {
        reader.text(member.path);
        reader.text(member.target);
        member.kind = static_cast<MemberKind>(reader.number());
        member.setsId = reader.number() != 0;
        member.size = static_cast<std::int64_t>(reader.number());
        visit(member);
    }
}
