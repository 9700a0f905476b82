#include "authority/log.h"

#include <cstdio>

namespace authority {

namespace {

// The stream's own lock keeps the lines of other threads out. A log that nobody takes is no reason not to
// stamp.
void write_line(std::FILE* stream, const std::string& line) {
    const std::string whole = line + "\n";
    flockfile(stream);
    std::fwrite(whole.data(), 1, whole.size(), stream);
    std::fflush(stream);
    std::clearerr(stream);
    funlockfile(stream);
}

}  // namespace

std::string text_of(const Quillmark::CDateTime& time) {
    char text[40];
    std::snprintf(text, sizeof text, "%04u-%02u-%02uT%02u:%02u:%02u.%03u%03uZ", time.year(), time.month(),
                  time.day(), time.hour(), time.minute(), time.second(), time.millisecond(),
                  time.microsecond());
    return text;
}

void log_stamp(const std::string& line) {
    write_line(stdout, line);
}

void log_trouble(const std::string& line) {
    write_line(stderr, "authority: " + text_of(Quillmark::CDateTime::Now()) + " " + line);
}

}  // namespace authority
