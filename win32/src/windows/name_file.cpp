#include "windows/name_file.h"

#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <vector>

#include "base/os_error.h"
#include "text/case_fold.h"

namespace host {
namespace {

constexpr std::uint32_t kNameMagic = 0x314E5651;  // "QVN1"
constexpr std::uint32_t kBuckets = 2 * NameFile::kNumbers;
constexpr off_t kBucketsAt = 64;
constexpr off_t kRecordsAt = kBucketsAt + off_t{kBuckets} * off_t{sizeof(std::uint32_t)};

std::uint32_t HashOf(WideView name) {
    std::uint32_t hash = 0x811C9DC5;
    for (const WCHAR unit : name) hash = (hash ^ FoldFileNameUnit(unit)) * 0x01000193;
    return hash;
}

off_t BucketAt(std::uint32_t hash) {
    return kBucketsAt + off_t{hash % kBuckets} * off_t{sizeof(std::uint32_t)};
}

}  // namespace

NameFile::NameFile(int fd) : fd_(fd) {
    Read(0, &header_, sizeof header_);
    const bool is_whole = header_.magic == kNameMagic && header_.changing == 0 &&
                          header_.used <= kNumbers && header_.free <= header_.used;
    if (!is_whole) MakeAnew();
}

void NameFile::Begin(int fd) {
    const Header header{kNameMagic, 0, 0, 0};
    if (ftruncate(fd, 0) != 0 || pwrite(fd, &header, sizeof header, 0) != sizeof header) {
        throw NameFileFailure{ErrorFromErrno(errno)};
    }
}

std::uint32_t NameFile::Find(WideView name) {
    const std::uint32_t hash = HashOf(name);
    const Place place = Walk(hash, [&](std::uint32_t index, const RecordHead& head) {
        return head.hash == hash && head.length == name.size() && SameFileName(NameAt(index), name);
    });
    return place.index;
}

std::uint32_t NameFile::Insert(WideView name) {
    const Link link = TakeFree();
    if (link == 0) return kNumbers;
    WriteHeader(1);
    const std::uint32_t hash = HashOf(name);
    Record record{{1, BucketOf(hash), hash, static_cast<std::uint32_t>(name.size())}, {}};
    name.copy(record.units.data(), kLongest);
    Write(kRecordsAt + off_t{link - 1} * off_t{sizeof record}, &record,
          sizeof record.head + name.size() * sizeof(WCHAR));
    SetNext(hash, 0, link);
    WriteHeader(0);
    return link - 1;
}

// Changes only the header in memory; the file has the change when the header is written next.
NameFile::Link NameFile::TakeFree() {
    const Link next = header_.free != 0 ? header_.free : header_.used + 1;
    const RecordHead head = next <= kNumbers ? HeadAt(next - 1) : RecordHead{};
    if (head.uses != 0 || head.next > header_.used) MakeAnew();
    if (header_.free == 0) return header_.used < kNumbers ? ++header_.used : 0;
    const Link link = header_.free;
    header_.free = HeadAt(link - 1).next;
    return link;
}

void NameFile::Remove(std::uint32_t index) {
    RecordHead head = HeadAt(index);
    const Place place =
        Walk(head.hash, [index](std::uint32_t at, const RecordHead&) { return at == index; });
    if (place.index != index) throw NameFileFailure{ERROR_INVALID_DATA};
    WriteHeader(1);
    SetNext(head.hash, place.before, HeadAt(index).next);
    WriteHead(index, {0, header_.free, 0, 0});
    header_.free = index + 1;
    WriteHeader(0);
}

std::uint32_t NameFile::UsesOf(std::uint32_t index) {
    if (index >= header_.used) return 0;
    const RecordHead head = HeadAt(index);
    return IsNamed(index, head) ? head.uses : 0;
}

void NameFile::SetUses(std::uint32_t index, std::uint32_t uses) {
    RecordHead head = HeadAt(index);
    head.uses = uses;
    WriteHead(index, head);
}

WideString NameFile::NameAt(std::uint32_t index) {
    const Record record = RecordAt(index);
    const std::size_t length = IsNamed(index, record.head) ? record.head.length : 0;
    return WideString(record.units.data(), length);
}

bool NameFile::IsNamed(std::uint32_t index, const RecordHead& head) const {
    return index < header_.used && head.uses != 0 && head.length != 0 && head.length <= kLongest;
}

// Looks for a record in the bucket of a hash. When a link is wrong, rebuilds the tables and tries
// once more.
template <class Matches>
NameFile::Place NameFile::Walk(std::uint32_t hash, const Matches& matches) {
    for (int attempt = 0; attempt < 2; ++attempt) {
        Place place;
        Link link = BucketOf(hash);
        for (std::uint32_t steps = 0; link != 0 && link <= header_.used; ++steps) {
            const RecordHead head = HeadAt(link - 1);
            if (steps == kNumbers || !IsNamed(link - 1, head)) break;
            if (matches(link - 1, head)) {
                place.index = link - 1;
                return place;
            }
            place.before = link;
            link = head.next;
        }
        if (link == 0) return Place{};
        MakeAnew();
    }
    throw NameFileFailure{ERROR_INVALID_DATA};
}

void NameFile::SetNext(std::uint32_t hash, Link before, Link next) {
    const off_t at = before == 0 ? BucketAt(hash)
                                 : kRecordsAt + off_t{before - 1} * off_t{sizeof(Record)} +
                                       off_t{offsetof(RecordHead, next)};
    Write(at, &next, sizeof next);
}

// Builds buckets and list of free records anew, from the records that are valid in themselves.
void NameFile::MakeAnew() {
    std::vector<RecordHead> heads(kNumbers);
    header_ = {kNameMagic, 1, kNumbers, 0};
    WriteHeader(1);
    header_.used = 0;
    for (std::uint32_t index = 0; index < kNumbers; ++index) {
        const Record record = RecordAt(index);
        const RecordHead& head = record.head;
        const bool is_name = head.uses != 0 && head.length != 0 && head.length <= kLongest &&
                             head.hash == HashOf({record.units.data(), head.length});
        if (!is_name) continue;
        heads[index] = head;
        header_.used = index + 1;
    }
    std::vector<Link> buckets(kBuckets);
    for (std::uint32_t index = header_.used; index-- > 0;) {
        RecordHead& head = heads[index];
        Link& first = head.uses == 0 ? header_.free : buckets[head.hash % kBuckets];
        head.next = first;
        first = index + 1;
        WriteHead(index, head);
    }
    Write(kBucketsAt, buckets.data(), buckets.size() * sizeof(Link));
    WriteHeader(0);
}

NameFile::Link NameFile::BucketOf(std::uint32_t hash) {
    Link link = 0;
    Read(BucketAt(hash), &link, sizeof link);
    return link;
}

NameFile::RecordHead NameFile::HeadAt(std::uint32_t index) {
    RecordHead head{};
    Read(kRecordsAt + off_t{index} * off_t{sizeof(Record)}, &head, sizeof head);
    return head;
}

NameFile::Record NameFile::RecordAt(std::uint32_t index) {
    Record record{};
    Read(kRecordsAt + off_t{index} * off_t{sizeof record}, &record, sizeof record);
    return record;
}

void NameFile::WriteHead(std::uint32_t index, const RecordHead& head) {
    Write(kRecordsAt + off_t{index} * off_t{sizeof(Record)}, &head, sizeof head);
}

void NameFile::WriteHeader(std::uint32_t changing) {
    header_.changing = changing;
    Write(0, &header_, sizeof header_);
}

// What lies behind the end of the file is zeros.
void NameFile::Read(off_t at, void* bytes, std::size_t size) {
    std::size_t done = 0;
    while (done < size) {
        const ssize_t count = pread(fd_, static_cast<char*>(bytes) + done, size - done,
                                    at + static_cast<off_t>(done));
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) throw NameFileFailure{ErrorFromErrno(errno)};
        if (count == 0) return;
        done += static_cast<std::size_t>(count);
    }
}

void NameFile::Write(off_t at, const void* bytes, std::size_t size) {
    std::size_t done = 0;
    while (done < size) {
        const ssize_t count = pwrite(fd_, static_cast<const char*>(bytes) + done, size - done,
                                     at + static_cast<off_t>(done));
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) throw NameFileFailure{ErrorFromErrno(errno)};
        done += static_cast<std::size_t>(count);
    }
}

}  // namespace host
