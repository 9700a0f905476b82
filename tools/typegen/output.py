"""All files that are made, and how they get to the disk."""

from __future__ import annotations

from pathlib import Path

from . import emit_codecs, emit_control, emit_declarations, emit_objects, emit_records
from .model import Catalogue
from .plan import Planner


def generate(catalogue: Catalogue) -> dict[str, str]:
    """File names and their contents."""
    plans = Planner(catalogue).plans()
    files = {
        "records.h": emit_records.records_header(plans),
        "codecs.h": emit_declarations.codecs_header(plans),
        "control_classes.h": emit_control.control_header(plans),
        "information_objects.h": emit_objects.objects_header(catalogue),
    }
    for module in catalogue.modules:
        own = [plan for plan in plans if plan.module is module]
        objects = emit_objects.module_objects(module, catalogue)
        files[f"{module.name}.cpp"] = emit_codecs.module_source(module, own, objects)
    return files


def write_all(files: dict[str, str], directory: Path) -> list[str]:
    """Writes what changed, so that nothing else is built again. Returns the names of what was written."""
    directory.mkdir(parents=True, exist_ok=True)
    written = []
    for name, text in files.items():
        path = directory / name
        if not path.exists() or path.read_text(encoding="utf-8") != text:
            path.write_text(text, encoding="utf-8")
            written.append(name)
    return written
