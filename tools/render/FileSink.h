// libsndfile's view of a fresh, empty file open for writing: its virtual I/O over a descriptor.
// Runs of silence written at the end of the file are not written but left as holes, which read
// back as zeros: a long silent render costs no disk space for its silence, and a test can make
// a 4 GiB file in seconds.
#pragma once

#include <sndfile.h>

#include <string>

class FileSink {
public:
    // `descriptor` must name an empty regular file open for reading and writing; the sink does
    // not close it.
    explicit FileSink(int descriptor) : descriptor(descriptor) {}

    static SF_VIRTUAL_IO& callbacks();

    // Gives the file its full length (a hole at its end is not there until then). False, with
    // error() set, if that or any earlier write failed.
    bool finish();
    const std::string& error() const { return errorText; }

private:
    sf_count_t length() const;
    sf_count_t seek(sf_count_t offset, int whence);
    sf_count_t read(void* buffer, sf_count_t count);
    sf_count_t write(const void* buffer, sf_count_t count);

    int descriptor;
    sf_count_t position = 0;
    sf_count_t logicalEnd = 0; // the file's length as libsndfile sees it
    sf_count_t writtenEnd = 0; // the end of the bytes really written; holes only beyond it
    std::string errorText;
};
