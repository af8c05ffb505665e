// SPDX-License-Identifier: GPL-3.0-or-later
// This reads sound files: WAV, AIFF, FLAC, Ogg, Opus, MP3 and what else the system's library knows.
#pragma once

#include "kits/media/MediaFormats.h"
#include "kits/storage/Entry.h"
#include "kits/support/SupportDefs.h"

#include <memory>
#include <string>

struct media_header;

enum : status_t {
    /// A track has no further frames.
    B_LAST_BUFFER_ERROR = -ENODATA,
};

/// The number of frames of a track whose file does not tell how long it is.
constexpr int64 kUnknownLength = -1;

/// The sound in a file. It belongs to its BMediaFile, and is used by one thread at a time.
class BMediaTrack {
  public:
    ~BMediaTrack();
    BMediaTrack(const BMediaTrack&) = delete;
    BMediaTrack& operator=(const BMediaTrack&) = delete;

    /// Settles the format of what ReadFrames delivers and writes it into `format`, whose channel
    /// count is a request: 1 mixes all channels to one (their mean), any other delivers the
    /// file's. Values are always B_AUDIO_FLOAT, full scale -1..1, at the file's rate; those that
    /// are not finite count as 0. The buffer size is what ReadFrames fills at most.
    status_t DecodedFormat(media_format* format);

    /// Returns how many frames there are by the file's header; a damaged file may have fewer or
    /// more. Where the header does not say, that is kUnknownLength.
    int64 CountFrames() const;

    /// Decodes up to one buffer; `buffer` holds as many bytes as the decoded format's buffer size.
    /// B_LAST_BUFFER_ERROR at the end. The header, which may be null, is not filled in.
    status_t ReadFrames(void* buffer, int64* frameCount, media_header* header = nullptr);

  private:
    friend class BMediaFile;
    struct Source;
    explicit BMediaTrack(std::unique_ptr<Source> source);

    std::unique_ptr<Source> source;
};

/// A sound file that is open for reading.
class BMediaFile {
  public:
    explicit BMediaFile(const entry_ref* ref);
    ~BMediaFile();
    BMediaFile(const BMediaFile&) = delete;
    BMediaFile& operator=(const BMediaFile&) = delete;

    status_t InitCheck() const { return status; }
    /// Says in words why InitCheck is not B_OK, and names the file.
    const std::string& Fault() const { return fault; }

    /// The file's only track is number 0; null for any other, after a fault or a release.
    BMediaTrack* TrackAt(int32 index);
    /// Closes the file; its tracks are gone.
    status_t ReleaseAllTracks();

  private:
    status_t status = B_OK;
    std::string fault;
    std::unique_ptr<BMediaTrack> track;
};
