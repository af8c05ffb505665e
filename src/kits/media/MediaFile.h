// SPDX-License-Identifier: GPL-3.0-or-later
// Reads sound files: WAV, AIFF, FLAC, Ogg, Opus, MP3 and the other formats that libsndfile knows.
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
    /// The file is of no known format.
    B_MEDIA_NO_HANDLER = -ENOTSUP,
};

/// The number of frames of a track whose file does not say how long it is.
constexpr int64 kUnknownLength = -1;

/// The sound in a file. It belongs to its BMediaFile, and is used by one thread at a time.
class BMediaTrack {
  public:
    ~BMediaTrack();
    BMediaTrack(const BMediaTrack&) = delete;
    BMediaTrack& operator=(const BMediaTrack&) = delete;

    /// Determines the format that ReadFrames delivers and writes it into `format`. The channel
    /// count in `format` is a request: 1 mixes all channels to one (their mean), any other value
    /// delivers the file's channels. Values are always B_AUDIO_FLOAT, full scale -1..1, at the
    /// file's rate; those that are not finite become 0. The buffer size is the most that ReadFrames
    /// fills.
    status_t DecodedFormat(media_format* format);

    /// Returns the number of frames according to the file's header; a damaged file may have fewer
    /// or more. Returns kUnknownLength if the header does not say.
    int64 CountFrames() const;

    /// Decodes up to one buffer; `buffer` has room for the decoded format's buffer size. Returns
    /// B_LAST_BUFFER_ERROR at the end. `header` may be null and is not filled in.
    status_t ReadFrames(void* buffer, int64* frameCount, media_header* header = nullptr);

    /// Returns a remark if the file ended before the sound was as long as its header states, with
    /// both lengths, or if an Ogg file ended before its stream; empty if it did not, or if the
    /// header states no length or one that cannot be compared. To be called once all frames are
    /// read. WAV, AIFF, AU, FLAC and Ogg are checked.
    std::string Shortfall() const;

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
    /// Returns a text that says why InitCheck is not B_OK and names the file.
    const std::string& Fault() const { return fault; }

    /// Returns the file's only track for index 0; null for any other index, after a fault or after
    /// a release.
    BMediaTrack* TrackAt(int32 index);
    /// Closes the file and deletes its track.
    status_t ReleaseAllTracks();

  private:
    status_t status = B_OK;
    std::string fault;
    std::unique_ptr<BMediaTrack> track;
};
