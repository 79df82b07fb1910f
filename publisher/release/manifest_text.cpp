#include "publisher/release/manifest_text.h"

#include <string_view>

namespace ca::publisher {

namespace {

void addString(std::string& text, std::string_view value) {
    text += '"';
    for (const char c : value) {
        switch (c) {
        case '"':
        case '\\':
            (text += '\\') += c;
            break;
        // The launcher's reader knows these escapes and no others.
        case '\n':
            text += "\\n";
            break;
        case '\r':
            text += "\\r";
            break;
        case '\t':
            text += "\\t";
            break;
        default:
            text += c;
        }
    }
    text += '"';
}

std::string quoted(std::string_view value) {
    std::string text;
    addString(text, value);
    return text;
}

const char* word(bool value) {
    return value ? "true" : "false";
}

// The reader takes the first occurrence of a quoted key, also where it is a value: what may
// be any text comes last.
void addFile(std::string& text, const update::ManifestFile& file) {
    text += "  {\"sha256\": \"" + file.sha256 + "\", \"size\": " + std::to_string(file.size) +
            ", \"executable\": ";
    text += word(file.executable);
    text += ", \"path\": ";
    addString(text, file.path);
    text += '}';
}

} // namespace

std::string manifestText(const update::UpdateManifest& manifest) {
    std::string text = "{\n \"format\": " + std::to_string(manifest.format);
    text += ",\n \"product\": " + quoted(manifest.product) +
            ",\n \"platform\": " + quoted(manifest.platform);
    text += ",\n \"version\": " + quoted(manifest.version);
    text += ",\n \"protocol_version\": " + std::to_string(manifest.protocol_version);
    text += ",\n \"minimum_online_version\": " + quoted(manifest.minimum_online_version);
    (text += ",\n \"mandatory\": ") += word(manifest.mandatory);
    text += ",\n \"release_notes\": " + quoted(manifest.release_notes);
    text += ",\n \"channel\": " + quoted(manifest.channel) + ",\n \"files\": [\n";
    // A hundred thousand files make some 20 MB.
    text.reserve(text.size() + manifest.files.size() * 200);
    const char* separator = "";
    for (const update::ManifestFile& file : manifest.files) {
        text += separator;
        addFile(text, file);
        separator = ",\n";
    }
    return text + "\n ]\n}\n";
}

} // namespace ca::publisher
