"""What must hold before anything is written. Each check stops the run with a message that says where, what is
wrong, and what would be right."""

from __future__ import annotations

from collections.abc import Iterable

from . import model, names
from .model import Catalogue, ModuleError
from .plan import Planner

# Annotations: where each may stand, and how many arguments it takes.
_ON_TYPE = {
    "big": 0, "biguint": 0, "u16": 0, "u32": 0, "sized": 1, "noconstraint": 0, "array": 0, "seqtag": 0, "raw": 0,
    "eoc": 0, "ext": 1, "path": 1, "bound": 1,
}
_ON_ELEMENT = {
    "big": 0, "biguint": 0, "u16": 0, "u32": 0, "sized": 1, "noconstraint": 0, "raw": 0, "path": 1, "bound": 1,
    "keepondecode": 0, "nofree": 0, "table": 2, "member": 1, "inorder": 0,
}
_INTEGER_FORMS = frozenset(("big", "biguint", "u16", "u32"))


def check(catalogue: Catalogue) -> None:
    _check_names(catalogue)
    _check_places(catalogue)
    for assignment in catalogue.types():
        _check_annotations(assignment.annotations, _ON_TYPE, f"type {assignment.name}")
        _check_type(assignment.type, assignment.position, catalogue)
        _check_definition(assignment, catalogue)
    _check_objects(catalogue)
    planner = Planner(catalogue)
    for assignment in catalogue.types():
        _check_tags(assignment, catalogue, planner)
        _check_table(assignment, catalogue)


# Names


def _check_names(catalogue: Catalogue) -> None:
    groups = {
        "type": [one for module in catalogue.modules for one in module.types],
        "number": [one for module in catalogue.modules for one in module.numbers],
        "object identifier": [one for module in catalogue.modules for one in module.oids],
        "class, object or set": [
            one for module in catalogue.modules for one in (*module.classes, *module.objects, *module.sets)
        ],
    }
    for kind, members in groups.items():
        seen: dict[str, model.Position] = {}
        for member in members:
            name = names.identifier(member.name)
            if name in seen:
                raise ModuleError(
                    member.position,
                    f"{kind} {member.name} is defined at {seen[name]} already, one name is one {kind}",
                )
            seen[name] = member.position


def _check_places(catalogue: Catalogue) -> None:
    """Every type stands in the list of its module, and in that order."""
    expected = dict(catalogue.expected)
    for module in catalogue.modules:
        listed = expected[module.name]
        last = -1
        for assignment in module.types:
            name = names.identifier(assignment.name)
            if name not in listed:
                raise ModuleError(
                    assignment.position,
                    f"type {assignment.name} is not listed under {module.name} in the catalogue, add it there",
                )
            place = listed.index(name)
            if place < last:
                raise ModuleError(
                    assignment.position,
                    f"type {assignment.name} stands behind {listed[last]}, the catalogue lists it in front",
                )
            last = place


# Annotations


def _check_annotations(found: Iterable[model.Annotation], known: dict[str, int], subject: str) -> None:
    seen: set[str] = set()
    for annotation in found:
        if annotation.name not in known:
            raise ModuleError(
                annotation.position,
                f"annotation '{annotation.name}' is not known on {subject}, it can be one of "
                + ", ".join(sorted(known)),
            )
        if len(annotation.arguments) != known[annotation.name]:
            raise ModuleError(
                annotation.position,
                f"annotation '{annotation.name}' takes {known[annotation.name]} arguments, "
                f"not {len(annotation.arguments)}",
            )
        if annotation.name in seen:
            raise ModuleError(annotation.position, f"annotation '{annotation.name}' stands twice on {subject}")
        seen.add(annotation.name)


def _check_form(
    kind: model.Type, annotations: tuple[model.Annotation, ...], position: model.Position, catalogue: Catalogue
) -> None:
    """Annotations that tell the form of a value fit the type written there."""
    while isinstance(kind, model.Tagged):
        kind = kind.type
    for annotation in annotations:
        if annotation.name in _INTEGER_FORMS and not isinstance(kind, model.Integer):
            raise ModuleError(annotation.position, f"annotation '{annotation.name}' is for an INTEGER")
        if annotation.name == "sized" and not isinstance(kind, (model.BitString, model.OctetString)):
            raise ModuleError(annotation.position, "annotation 'sized' is for a BIT STRING or OCTET STRING")
        if annotation.name == "bound" and not isinstance(kind, model.Enumerated):
            raise ModuleError(annotation.position, "annotation 'bound' is for an ENUMERATED")
    if len(_INTEGER_FORMS.intersection(annotation.name for annotation in annotations)) > 1:
        raise ModuleError(position, "an INTEGER has one form, keep one of big, biguint, u16 and u32")


def _check_definition(assignment: model.TypeAssignment, catalogue: Catalogue) -> None:
    kind = assignment.type
    _check_form(kind, assignment.annotations, assignment.position, catalogue)
    if isinstance(kind, model.Tagged):
        if kind.tag.tag_class != "APPLICATION" or not isinstance(kind.type, model.Choice):
            raise ModuleError(
                assignment.position,
                f"{assignment.name}: a type with a tag of its own can only be an [APPLICATION n] CHOICE, put other "
                "tags on the elements that use it",
            )
        kind = kind.type
    is_list = isinstance(kind, model.ListOf)
    if assignment.annotation("array") and not is_list:
        raise ModuleError(assignment.position, "annotation 'array' is for a SEQUENCE OF or SET OF")
    if assignment.annotation("seqtag") and not (is_list and kind.universal == "SET"):
        raise ModuleError(assignment.position, "annotation 'seqtag' is for a SET OF")
    extension = assignment.annotation("ext") is not None
    if extension != (isinstance(kind, model.Sequence) and kind.extensible):
        raise ModuleError(
            assignment.position, f"{assignment.name}: '...' and '--@ ext MEMBER' go together, one of them is missing"
        )


# Types


def _check_type(kind: model.Type, position: model.Position, catalogue: Catalogue) -> None:
    if isinstance(kind, model.Reference) and catalogue.type(kind.name) is None:
        raise ModuleError(position, f"type {kind.name} is not defined{_hint(kind.name, catalogue)}")
    if isinstance(kind, model.Tagged):
        if kind.tag.number > 30:
            raise ModuleError(position, f"tag number {kind.tag.number} takes more than one octet, it can be 30 at most")
        _check_type(kind.type, position, catalogue)
    if isinstance(kind, model.ListOf):
        _check_type(kind.element, position, catalogue)
    if isinstance(kind, model.ClassField):
        _check_class_field(kind, position, catalogue)
    if isinstance(kind, model.OctetString) and kind.containing is not None:
        _check_class_field(kind.containing, position, catalogue)
    _check_bounds(kind, position, catalogue)
    for element in getattr(kind, "elements", ()) or getattr(kind, "alternatives", ()):
        _check_annotations(element.annotations, _ON_ELEMENT, f"element {element.name}")
        _check_type(element.type, element.position, catalogue)
        _check_form(element.type, element.annotations, element.position, catalogue)
        _check_implicit(element, catalogue)
    _check_element_names(kind)


def _hint(name: str, catalogue: Catalogue) -> str:
    if catalogue.is_expected(names.identifier(name)):
        return ", though the catalogue lists it: write it before it is used"
    return " and the catalogue does not list it: is the name right?"


def _check_bounds(kind: model.Type, position: model.Position, catalogue: Catalogue) -> None:
    bounds = getattr(kind, "size", None) or getattr(kind, "range", None)
    if bounds is None:
        return
    for bound in (bounds.low, bounds.high):
        if bound.name is not None and catalogue.number(bound.name) is None:
            raise ModuleError(position, f"bound {bound.name} is not defined, add '{bound.name} INTEGER ::= n'")
    low, high = catalogue.value(bounds.low), catalogue.value(bounds.high)
    if low is not None and high is not None and low > high:
        raise ModuleError(position, f"the range {low}..{high} is empty, the lower bound comes first")


def _check_implicit(element: model.Element, catalogue: Catalogue) -> None:
    if not isinstance(element.type, model.Tagged) or element.type.tag.mode != "IMPLICIT":
        return
    if isinstance(catalogue.base(element.type.type), (model.Choice, model.OpenType, model.ClassField)):
        raise ModuleError(
            element.position,
            f"{element.name}: a tag on a CHOICE or open type is explicit (X.680 31.2.9), drop IMPLICIT",
        )


def _check_element_names(kind: model.Type) -> None:
    seen: set[str] = set()
    for element in getattr(kind, "elements", ()) or getattr(kind, "alternatives", ()):
        name = names.identifier(element.name)
        if name in seen:
            raise ModuleError(element.position, f"element {element.name} stands twice, give one of them another name")
        seen.add(name)


# Tags


def _check_tags(assignment: model.TypeAssignment, catalogue: Catalogue, planner: Planner) -> None:
    kind = assignment.type.type if isinstance(assignment.type, model.Tagged) else assignment.type
    module = catalogue.module_of(assignment.name)
    if isinstance(kind, model.Choice) or isinstance(kind, model.Sequence) and kind.universal == "SET":
        _check_distinct(kind, module, planner)
    elif isinstance(kind, model.Sequence):
        _check_optional(kind, module, planner)


def _check_distinct(kind: model.Type, module: model.Module, planner: Planner) -> None:
    """Alternatives, and elements of a SET, are told apart by their tags."""
    seen: dict[str, str] = {}
    for element in getattr(kind, "elements", ()) or kind.alternatives:
        tags = planner.tag_words(element, module)
        if not tags:
            raise ModuleError(element.position, f"{element.name} can begin with any tag, give it one of its own")
        for tag in tags:
            if tag in seen:
                raise ModuleError(
                    element.position,
                    f"{element.name} begins with the same tag as {seen[tag]}, give one a context tag",
                )
            seen[tag] = element.name


def _check_optional(kind: model.Sequence, module: model.Module, planner: Planner) -> None:
    """An element that may be absent begins unlike all that can stand in its place."""
    for index, element in enumerate(kind.elements):
        required = not element.optional and element.default is None
        if required or element.annotation("inorder"):
            continue
        own = planner.tag_words(element, module)
        for other in kind.elements[index + 1 :]:
            others = planner.tag_words(other, module)
            if not own or set(own) & set(others):
                raise ModuleError(
                    element.position,
                    f"{element.name} may be absent and begins with the same tag as {other.name}, give one a context "
                    "tag, or write '--@ inorder' where the standard has it so",
                )
            if not other.optional and other.default is None:
                break


# Tables and information objects


def _check_class_field(field: model.ClassField, position: model.Position, catalogue: Catalogue) -> None:
    found = catalogue.object_class(field.object_class)
    if found is None:
        raise ModuleError(position, f"class {field.object_class} is not defined")
    if found.type_field != field.field:
        raise ModuleError(
            position, f"class {found.name} has no field &{field.field}, its type field is &{found.type_field}"
        )
    if field.table is not None:
        _check_set(field.table.set, field.object_class, position, catalogue)


def _check_set(name: str, object_class: str | None, position: model.Position, catalogue: Catalogue) -> None:
    found = catalogue.object_set(name)
    if found is None:
        raise ModuleError(position, f"object set {name} is not defined")
    if object_class is not None and found.object_class != object_class:
        raise ModuleError(position, f"object set {name} is of class {found.object_class}, not {object_class}")


def _check_table(assignment: model.TypeAssignment, catalogue: Catalogue) -> None:
    kind = assignment.type
    if not isinstance(kind, model.Sequence):
        return
    before: dict[str, model.Element] = {}
    for element in kind.elements:
        identifier = _table_identifier(element, catalogue)
        if identifier is not None:
            found = before.get(identifier)
            if found is None:
                raise ModuleError(
                    element.position, f"the identifier {identifier} does not stand in front of {element.name}"
                )
            if not isinstance(catalogue.base(found.type), model.ObjectIdentifier):
                raise ModuleError(found.position, f"{identifier} decides a type, so it must be an OBJECT IDENTIFIER")
        before[element.name] = element


def _table_identifier(element: model.Element, catalogue: Catalogue) -> str | None:
    annotation = element.annotation("table")
    if annotation is not None:
        _check_set(annotation.arguments[0], None, annotation.position, catalogue)
        return annotation.arguments[1]
    kind = element.type.type if isinstance(element.type, model.Tagged) else element.type
    if isinstance(kind, model.ClassField):
        return kind.table.identifier if kind.table else None
    if isinstance(kind, model.OctetString) and kind.containing is not None:
        if element.annotation("member") is None:
            raise ModuleError(
                element.position, f"{element.name} wraps a value, name the member for it with '--@ member NAME'"
            )
        return kind.containing.table.identifier
    return None


def _check_objects(catalogue: Catalogue) -> None:
    for module in catalogue.modules:
        for one in module.oids:
            _check_arcs(one.arcs, one.position, catalogue)
        for one in module.objects:
            _check_object(one, catalogue)
        for one in module.sets:
            _check_members(one, catalogue)


def _check_arcs(arcs: tuple[int | str, ...], position: model.Position, catalogue: Catalogue) -> None:
    for arc in arcs:
        if isinstance(arc, str) and catalogue.oid(arc) is None:
            raise ModuleError(position, f"object identifier {arc} is not defined, write 'name(number)' or define it")


def _check_object(one: model.InformationObject, catalogue: Catalogue) -> None:
    found = catalogue.object_class(one.object_class)
    if found is None:
        raise ModuleError(one.position, f"class {one.object_class} is not defined")
    if one.type is None and not found.type_optional:
        raise ModuleError(
            one.position, f"object {one.name} needs a &{found.type_field}, which its class does not make OPTIONAL"
        )
    if one.type is not None and catalogue.type(one.type) is None:
        raise ModuleError(
            one.position, f"object {one.name} carries {one.type}, which is not defined{_hint(one.type, catalogue)}"
        )
    if one.arcs is not None:
        _check_arcs(one.arcs, one.position, catalogue)


def _check_members(one: model.ObjectSet, catalogue: Catalogue) -> None:
    if catalogue.object_class(one.object_class) is None:
        raise ModuleError(one.position, f"class {one.object_class} is not defined")
    seen: dict[tuple[int, ...], str] = {}
    for name in one.members:
        found = catalogue.object(name)
        if found is None:
            raise ModuleError(one.position, f"set {one.name} names object {name}, which is not defined")
        if found.object_class != one.object_class:
            raise ModuleError(
                one.position, f"set {one.name} is of class {one.object_class}, {name} of {found.object_class}"
            )
        if found.arcs is None:
            raise ModuleError(
                one.position, f"object {name} has no identifier, so that set {one.name} could never find it"
            )
        arcs = catalogue.arcs(found.arcs)
        if arcs in seen:
            raise ModuleError(
                one.position, f"{name} has the identifier of {seen[arcs]}, set {one.name} would never find it"
            )
        seen[arcs] = name
