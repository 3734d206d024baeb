#pragma once

#include "files/Document.hpp"
#include "messaging/Channel.hpp"

#include <expected>
#include <functional>
#include <optional>

namespace kivo::reader {

/// Reads the files of a chip, with as few commands as the chip's lengths allow. One thread at a time.
class FileReader {
public:
    /// `count` bytes of `all` are read.
    using Progress = std::function<void(std::size_t count, std::size_t all)>;

    explicit FileReader(Channel& channel)
        : channel_{channel} {}

    /// The whole file, at most 200 KiB, and at most 1 MiB of all files together. Absent where the chip has no such
    /// file.
    std::expected<std::optional<Bytes>, ChipFault> read(DocumentFile file, const Progress& progress = {});

    /// EF.ATR/INFO, whose objects have no common tag; empty where the chip has none.
    std::expected<Bytes, ChipFault> readAtrInfo();

private:
    std::expected<bool, ChipFault> select(std::uint16_t identifier);
    std::expected<Bytes, ChipFault> readPart(std::size_t offset, std::size_t size);
    std::size_t longestPart(std::size_t offset) const;

    Channel& channel_;
    std::size_t readInAll_ = 0;
    std::optional<std::size_t> longestAnswered_{};
};

} // namespace kivo::reader
