#pragma once

/// Marks what the shared library exports. Everything is built with hidden visibility, so a
/// declaration without this macro stays inside the library (or the static archive).
#define QUILLMARK_API __attribute__((visibility("default")))
