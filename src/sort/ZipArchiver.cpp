#include "sort/ZipArchiver.h"

#include <sys/stat.h>
#include <unistd.h>
#include <zip.h>

namespace bv {
namespace {

bool taken(const std::string& path) {
    struct stat st{};
    return ::lstat(path.c_str(), &st) == 0;
}

std::string zipErrorText(zip_error_t* error) {
    const char* text = zip_error_strerror(error);
    return text ? text : "unknown error";
}

} // namespace

std::string ZipArchiver::freeArchivePath(const std::string& folder, const std::string& stem) {
    const std::string base = folder == "/" ? folder : folder + "/";
    std::string candidate = base + stem + ".zip";
    for (int n = 2; n <= 500 && taken(candidate); ++n) candidate = base + stem + " " + std::to_string(n) + ".zip";
    return candidate;
}

std::optional<std::string> ZipArchiver::zipFile(const std::string& sourcePath, const std::string& entryName,
                                                const std::string& archivePath) {
    int code = 0;
    // ZIP_EXCL: a file that appeared under this name since the search is never replaced.
    zip_t* archive = zip_open(archivePath.c_str(), ZIP_CREATE | ZIP_EXCL, &code);
    if (!archive) {
        zip_error_t error;
        zip_error_init_with_code(&error, code);
        std::string text = zipErrorText(&error);
        zip_error_fini(&error);
        return text;
    }
    // A length of -1 reads to the end of the file.
    zip_source_t* source = zip_source_file(archive, sourcePath.c_str(), 0, -1);
    if (!source || zip_file_add(archive, entryName.c_str(), source, ZIP_FL_ENC_UTF_8) < 0) {
        std::string text = zipErrorText(zip_get_error(archive));
        if (source) zip_source_free(source);
        zip_discard(archive);
        return text;
    }
    // libzip writes a temporary file beside the archive and renames it into place on close;
    // a failed close removes the temporary file, so a full disk leaves nothing behind.
    if (zip_close(archive) != 0) {
        std::string text = zipErrorText(zip_get_error(archive));
        zip_discard(archive);
        return text;
    }
    return std::nullopt;
}

} // namespace bv
