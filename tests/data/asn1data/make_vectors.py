#!/usr/bin/python3
"""Writes types_by_pyasn1.txt: values in DER of every type of the catalogue, by an encoder that is not ours; and
types_not_sorted.txt: each SET OF in BER, which leaves the members in any order, beside its DER.

The encoder is that of Debian's python3-pyasn1 0.4.8. A type that python3-pyasn1-modules 0.2.8 has is filled in the
schema of that package, another one in a schema made of our ASN.1, so that there the encoder alone is independent. Where
both make different octets of a type there are rows of both.

A schema is filled twice, with every optional element and with none, and once for each alternative of a CHOICE.
Identifiers are 1.2.3.4, which no set knows, so that carried values stay as they are; then every object of every set
is written once in a record that carries it.
"""

import importlib
import sys
from pathlib import Path

from pyasn1.codec.ber.encoder import encode as encode_ber
from pyasn1.codec.der.encoder import encode
from pyasn1.error import PyAsn1Error
from pyasn1.type import char, constraint, namedtype, namedval, tag, univ, useful

HERE = Path(__file__).resolve().parent
ROOT = HERE.parents[2]
sys.path.insert(0, str(ROOT / "tools"))

from typegen import catalogue, model, names, parser  # noqa: E402

OID = "1.2.3.4"
SERIAL = 0x1234567890ABCDEF01
UNLIMITED = 1 << 64

# Where the package has the types of a module, and what it calls those of another name there. A name with a dot is an
# element of a type, `element` the member of a list.
PACKAGE = {
    "AuthenticationFramework": ("rfc5280", "rfc5652", "rfc5755"),
    "CertificateExtensions": ("rfc5280",),
    "CryptographicMessageSyntax": ("rfc5652", "rfc3565", "rfc2315"),
    "PKCSParameters": ("rfc8018", "rfc4055", "rfc2631"),
    "InHousePKIAudit": ("rfc4210",),
    "ElectronicSignatureAttributes": ("rfc5280", "rfc3161", "rfc5652"),
    "AttributeValues": ("rfc5280", "rfc5652"),
    "PKIXCertificates": ("rfc5280", "rfc2634", "rfc5035", "rfc8017", "rfc5652", "rfc2985", "rfc2986"),
    "AlgorithmIdentifiers": ("rfc5280", "rfc3279"),
    "CertificateManagementProtocol": ("rfc4210", "rfc2986"),
    "CertificateRequestMessageFormat": ("rfc4211",),
    "OnlineCertificateStatus": ("rfc6960", "rfc5280"),
    "TimeStampProtocol": ("rfc3161",),
    "SMIMECapabilities": ("rfc5751", "rfc8018"),
}
RENAMED = {
    "AttributeCertificate": "AttributeCertificateV1", "AttributeCertificateInfo": "AttributeCertificateInfoV1",
    "AttributeCertificateInfo_subject": "AttributeCertificateInfoV1.subject",
    "_SeqOfAttribute": "AttributeCertificateInfoV1.attributes",
    "_extKeyUsage_ExtnType": "ExtKeyUsageSyntax", "CertificatePoliciesSyntax": "CertificatePolicies",
    "PolicyMappingsSyntax": "PolicyMappings", "PolicyMappingsSyntax_element": "PolicyMappings.element",
    "AttributesSyntax": "SubjectDirectoryAttributes", "NameConstraintsSyntax": "NameConstraints",
    "BasicConstraintsSyntax": "BasicConstraints", "PolicyConstraintsSyntax": "PolicyConstraints",
    "CRLDistPointsSyntax": "CRLDistributionPoints", "IssuingDistPointSyntax": "IssuingDistributionPoint",
    "GeneralName_otherName": "AnotherName", "QTDisplayText": "DisplayText", "QTNoticeReference": "NoticeReference",
    "QTNoticeReference_noticeNumbers": "NoticeReference.noticeNumbers", "QTUserNotice": "UserNotice",
    "EDIPartyName_nameAssigner": "DirectoryString", "EDIPartyName_partyName": "DirectoryString",
    "HoldInstruction": "HoldInstructionCode", "CertHash": "Hash",
    "AttributeRaw": "Attribute", "AttributeRaw_valuesRaw": "Attribute.attrValues",
    "AttributesRaw": "SignedAttributes", "CertificateChoicesRaw": "CertificateChoices",
    "CertificateSetRaw": "CertificateSet",
    "CertificateListLegacy": "CertificateList", "SignerInfoLegacy": "SignerInfo", "SignerInfosLegacy": "SignerInfos",
    "SignedDataLegacy": "SignedData", "ContentInfoLegacy": "ContentInfo",
    "RC2CBCParameter": "RC2_CBC_Parameter", "RC2_CBC_parameter": "RC2_CBC_Parameter", "SharedInfo": "OtherInfo",
    "PBKDF2_params_salt": "PBKDF2_params.salt",
    "CertifiedAttributes": "AttributeCertificateV1", "ContentTimestamp": "TimeStampToken",
    "SignatureTimeStampToken": "TimeStampToken", "ESCTimeStampToken": "TimeStampToken",
    "TimestampedCertsCRLs": "TimeStampToken", "ArchiveTimeStampToken": "TimeStampToken",
    "NoticeReference_noticeNumbers": "NoticeReference.noticeNumbers",
    "SignerLocation_countryName": "DirectoryString", "SignerLocation_localityName": "DirectoryString",
    "ContentTypeIdentifier": "ContentType", "CaseIgnoreIA5StringSyntax": "DomainComponent",
    "CaseIgnoreIA5StringSyntaxNonStrict": "DomainComponent", "PHGString": "EmailAddress",
    "PHGStringNonStrict": "EmailAddress", "_messageDigest_Type": "MessageDigest",
    "_name_Type": "X520name", "_commonName_Type": "X520CommonName", "_surname_Type": "X520name",
    "_givenName_Type": "X520name", "_initials_Type": "X520name", "_generationQualifier_Type": "X520name",
    "_localityName_Type": "X520LocalityName", "_streetAddress_Type": "DirectoryString",
    "_stateOrProvinceName_Type": "X520StateOrProvinceName", "_organizationName_Type": "X520OrganizationName",
    "_organizationalUnitName_Type": "X520OrganizationalUnitName", "_title_Type": "X520Title",
    "_x520Pseudonym_Type": "X520Pseudonym", "_characterString_Type": "X520dnQualifier",
    "_unstructuredName_Type": "PKCS9String.directoryString", "_postalCode_Type": "DirectoryString",
    "PostalAddress_element": "DirectoryString",
    "Attribute_values": "Attribute.values", "SignedOpenType": "Certificate", "PCI_Attribute": "Attribute",
    "RsaPubKey": "RSAPublicKey", "RsaModulus": "RSAPublicKey.modulus", "CRTComponent": "RSAPrivateKey.prime1",
    "TBSCertList_revokedCertificates_element": "TBSCertList.revokedCertificates.element",
    "_SeqOfTBSCertList_revokedCertificates_element": "TBSCertList.revokedCertificates",
    "UnformattedPostalAddress_printable_address": "UnformattedPostalAddress.printable-address",
    "ExtendedNetworkAddress_e163_4_address": "ExtendedNetworkAddress.e163-4-address",
    "PresentationAddress_nAddresses": "PresentationAddress.nAddresses",
    "PCI_HSM_CertificationRequest": "CertificationRequest",
    "PCI_HSM_CertificationRequestInfo": "CertificationRequestInfo",
    "CertificationRequest_certificationRequestInfo": "CertificationRequestInfo",
    "CertificationRequest_certificationRequestInfo_subjectPublicKeyInfo": "SubjectPublicKeyInfo",
    "PKIConfirmContent_": "PKIConfirmContent", "EncryptedPKey": "EncryptedKey",
    "OCSPVersion": "Version", "UnknownInfo_": "UnknownInfo", "OCSPSignature": "Signature",
    "Certificates": "BasicOCSPResponse.certs", "CrlLocator": "CRLDistributionPoints",
    "TSTInfoRaw": "TSTInfo", "TSTInfoRaw_version": "TSTInfo.version", "TimeStampRespRaw": "TimeStampResp",
}
# The members of unnamed lists, where they are not in a module of the same package.
LISTED_IN = {"CertificateList": "rfc5280", "BasicOCSPResponse": "rfc6960"}
# Elements and alternatives of the package's types that ours do not have.
LEFT_OUT = {("IssuerSerial", "issuerUID"), ("CertificateChoices", "v2AttrCert"), ("CertificateChoices", "other")}
# Values of the package's types that are none of ours: an element that may be absent there alone, an alternative.
NOT_OURS = {("RC2CBCParameter", "Least"), ("RC2_CBC_parameter", "Least"), ("DisplayText", "Ia5String")}
# Types of the package that are not those of the catalogue.
DIFFERENT = {
    "NestedMessageContent", "PKIBody",  # of ANY
    # a GeneralName of the package's rfc2511, which is an OCTET STRING
    "CertRepMessage", "CertResponse", "CertifiedKeyPair", "KeyRecRepContent", "OOBCertHash", "RevAnnContent",
    "RevRepContent", "KeyRecRepContent_keyPairHist", "RevRepContent_revCerts", "_SeqOfCertResponse",
}

# The alternatives that stand for their CHOICE inside another type; elsewhere it is the first.
USUAL = ("dNSName", "utcTime", "pkiconf", "subsequentMessage", "utf8String")


# Schemas of the modules


class Modules:
    """Makes a schema of a type as our modules define it."""

    def __init__(self):
        expected = catalogue.read(ROOT / "asn1data" / "catalogue.txt")
        files = sorted((ROOT / "asn1data" / "modules").glob("*.asn1"))
        parsed = [parser.parse_file(path, path.name) for path in files]
        self.catalogue = model.Catalogue(catalogue.in_order(parsed, expected), expected)
        self._open = []

    def types(self):
        for module in self.catalogue.modules:
            for assignment in module.types:
                yield module, assignment

    def schema(self, name):
        """The schema of a type, or None for one that is being made, which would never end."""
        if name in self._open:
            return None
        assignment = self.catalogue.type(name)
        self._open.append(name)
        made = self._of(assignment.type, self.catalogue.module_of(name), assignment)
        self._open.pop()
        return made

    def _of(self, kind, module, holder):
        if isinstance(kind, model.Reference):
            return self.schema(kind.name)
        if isinstance(kind, model.Tagged):
            return self._tagged(kind, module, holder)
        if isinstance(kind, model.Sequence):
            base = univ.Sequence if kind.universal == "SEQUENCE" else univ.Set
            elements = self._elements(kind.elements, module)
            return None if None in elements else base(componentType=namedtype.NamedTypes(*elements))
        if isinstance(kind, model.Choice):
            alternatives = [one for one in self._elements(kind.alternatives, module) if one is not None]
            return univ.Choice(componentType=namedtype.NamedTypes(*alternatives))
        if isinstance(kind, model.ListOf):
            return self._list(kind, module, holder)
        if isinstance(kind, (model.OpenType, model.ClassField)):
            return univ.Any()
        return self._leaf(kind)

    def _tagged(self, kind, module, holder):
        inner = self._of(kind.type, module, holder)
        if inner is None:
            return None
        classes = {"CONTEXT": tag.tagClassContext, "APPLICATION": tag.tagClassApplication}
        mode = kind.tag.mode or module.tags
        if mode == "EXPLICIT" or kind.tag.tag_class == "APPLICATION" or self._whole(kind.type, holder):
            return inner.subtype(
                explicitTag=tag.Tag(classes[kind.tag.tag_class], tag.tagFormatConstructed, kind.tag.number))
        form = tag.tagFormatConstructed if isinstance(
            inner, (univ.SequenceOf, univ.SetOf, univ.Sequence, univ.Set)) else tag.tagFormatSimple
        return inner.subtype(implicitTag=tag.Tag(classes[kind.tag.tag_class], form, kind.tag.number))

    def _whole(self, kind, holder):
        """Whether a value keeps its header under a tag: a CHOICE, ANY, or what is kept as its octets."""
        if holder.annotation("raw"):
            return True
        while isinstance(kind, model.Reference):
            assignment = self.catalogue.type(kind.name)
            if assignment.annotation("raw"):
                return True
            kind = assignment.type
        if isinstance(kind, model.Tagged):
            return True
        return isinstance(kind, (model.Choice, model.OpenType, model.ClassField))

    def _elements(self, elements, module):
        made = []
        for element in elements:
            schema = self._of(element.type, module, element)
            if schema is None:
                made.append(None)
            elif element.default is not None and self._default(element, schema) is not None:
                made.append(namedtype.DefaultedNamedType(element.name, self._default(element, schema)))
            elif element.optional or element.default is not None:
                made.append(namedtype.OptionalNamedType(element.name, schema))
            else:
                made.append(namedtype.NamedType(element.name, schema))
        return made

    def _default(self, element, schema):
        """The schema with its default, None for a default that is a remark."""
        if isinstance(schema, univ.Boolean):
            return schema.clone(element.default == "TRUE")
        if isinstance(schema, univ.Integer):
            number = dict(self.catalogue.base(element.type).names).get(element.default, element.default)
            return schema.clone(int(number))
        return None

    def _list(self, kind, module, holder):
        element = self._of(kind.element, module, holder)
        if element is None:
            return None
        base = univ.SetOf if kind.universal == "SET" else univ.SequenceOf
        if holder.annotation("seqtag"):
            base = univ.SequenceOf
        return base(componentType=element)

    def _bounds(self, size):
        low, high = self.catalogue.value(size.low), self.catalogue.value(size.high)
        return (low or 0, UNLIMITED if high is None else high)

    def _leaf(self, kind):
        limits = {}
        if getattr(kind, "size", None):
            limits = {"subtypeSpec": constraint.ValueSizeConstraint(*self._bounds(kind.size))}
        if getattr(kind, "range", None):
            limits = {"subtypeSpec": constraint.ValueRangeConstraint(*self._bounds(kind.range))}
        if isinstance(kind, model.Boolean):
            return univ.Boolean()
        if isinstance(kind, model.Null):
            return univ.Null()
        if isinstance(kind, model.ObjectIdentifier):
            return univ.ObjectIdentifier()
        if isinstance(kind, model.OctetString):
            return univ.OctetString(**limits)
        if isinstance(kind, model.CharacterString):
            return self._string(kind.kind)(**limits)
        base = {model.Integer: univ.Integer, model.Enumerated: univ.Enumerated, model.BitString: univ.BitString}
        made = base[type(kind)](namedValues=namedval.NamedValues(*kind.names), **limits)
        return made

    @staticmethod
    def _string(kind):
        return getattr(char, kind, None) or getattr(useful, kind)


# Schemas of the package


def published(module, name):
    """The schema that the package has for a type, and where, or None."""
    if name in DIFFERENT:
        return None
    for source in PACKAGE.get(module, ()):
        found = in_package(source, name)
        if found is not None:
            return found, source
    return None


def in_package(source, name):
    if name.startswith("_SeqOf") and name not in RENAMED:
        member = name.removeprefix("_SeqOf")
        schema = in_package(LISTED_IN.get(member, source), member)
        return None if schema is None else univ.SequenceOf(componentType=schema)
    package = importlib.import_module("pyasn1_modules." + source)
    whole, *path = RENAMED.get(name, name).split(".")
    if not path and not hasattr(package, whole):
        whole, _, element_name = whole.partition("_")
        path = [element_name]
    found = getattr(package, whole, None)
    if not (isinstance(found, type) and issubclass(found, univ.base.Asn1Type)):
        return None
    found = found()
    for step in path:
        found = part_of(found, step)
        if found is None:
            return None
    return found


def part_of(schema, step):
    """An element of a schema, without the tag that it has there."""
    if step == "element":
        return schema.componentType
    named = getattr(schema, "componentType", None)
    if not isinstance(named, namedtype.NamedTypes) or step not in named:
        return None
    found = named[named.getPositionByName(step)].asn1Object
    return found.clone(tagSet=type(found).tagSet)


# Filling a schema


def fill(schema, every, name=None):
    """A value with every optional element and two members in each list, or with as little as there can be. `name`
    is the element that the value is for."""
    if isinstance(schema, univ.Choice):
        return alternative(schema, usual_of(schema), every)
    if isinstance(schema, (univ.SequenceOf, univ.SetOf)):
        return list_of(schema, every)
    if isinstance(schema, (univ.Sequence, univ.Set)):
        return structure(schema, every)
    return leaf(schema, name)


def usual_of(schema):
    alternatives = list(schema.componentType)
    return next((name for name in USUAL if name in alternatives), alternatives[0])


def alternative(schema, name, every):
    value = schema.clone()
    position = schema.componentType.getPositionByName(name)
    place(value, position, fill(schema.componentType.getTypeByPosition(position), every, name))
    return value


def list_of(schema, every):
    value = schema.clone()
    place(value, 0, fill(schema.componentType, False))
    if every:
        place(value, 1, fill(schema.componentType, True))
    return value


def structure(schema, every):
    value = schema.clone()
    for position, element in enumerate(schema.componentType.namedTypes):
        if (type(schema).__name__, element.name) in LEFT_OUT:
            continue
        if every or not (element.isOptional or element.isDefaulted):
            given = element.asn1Object
            chosen = fill(given, every, element.name)
            if element.isDefaulted and chosen == given:
                chosen = another_than(given)
            place(value, position, chosen)
    return value


def place(value, position, component):
    """Without the comparison of schemas, which refuses some of the package's own."""
    value.setComponentByPosition(
        position, component, verifyConstraints=False, matchTags=False, matchConstraints=False)


def another_than(default):
    return default.clone(not default) if isinstance(default, univ.Boolean) else default.clone(int(default) + 1)


def leaf(schema, name):
    for candidate in candidates(schema, name):
        try:
            return schema.clone(candidate)
        except PyAsn1Error:
            continue
    raise ValueError(f"no value fits {schema!r}")


def candidates(schema, name):
    if isinstance(schema, univ.Any):
        return [b"\x04\x02\x05\x00" if name == "extnValue" else b"\x05\x00"]
    if isinstance(schema, univ.Null):
        return [""]
    if isinstance(schema, univ.Boolean):
        return [True]
    if isinstance(schema, univ.Enumerated):
        return [*list(schema.namedValues.values())[-1:], 5]
    if isinstance(schema, univ.Integer):
        if name in ("serialNumber", "userCertificate", "authorityCertSerialNumber"):
            return [SERIAL]
        return [5, 1, 0]
    if isinstance(schema, univ.BitString):
        return ["101" if schema.namedValues else "1010000110110010"]
    if isinstance(schema, useful.GeneralizedTime):
        return ["20240102030405Z"]
    if isinstance(schema, useful.UTCTime):
        return ["240102030405Z"]
    if isinstance(schema, char.NumericString):
        return ["643", "64", "6"]
    if isinstance(schema, char.AbstractCharacterString):
        return ["Quill", "Qui", "Qu", "Q"]
    if isinstance(schema, univ.OctetString):
        return [bytes((0xA1 + i) & 0xFF for i in range(count)) for count in (3, 1, 2, 4, 8, 16, 20, 32, 64, 128)]
    return [OID]


def fillings(schema):
    """Pairs of a name and a value."""
    if isinstance(schema, univ.Choice):
        for name in schema.componentType:
            if (type(schema).__name__, name) not in LEFT_OUT:
                yield capital(name), alternative(schema, name, True)
        return
    full, least = fill(schema, True), fill(schema, False)
    yield ("Whole" if full.isSameTypeWith(least) and encode(full) != encode(least) else "Value"), full
    if encode(full) != encode(least):
        yield "Least", least


def capital(name):
    return names.identifier(name[0].upper() + name[1:])


# Rows


class Rows:
    def __init__(self):
        self.text = []
        self._seen = set()

    def add(self, remark, kind, name, der, ber=None):
        if (kind, name) in self._seen:
            raise ValueError(f"{kind} {name} stands twice")
        self._seen.add((kind, name))
        text = f"# {remark}\nType = {kind}\nName = {name}\nDer = {in_lines(der)}\n"
        self.text.append(text if ber is None else f"{text}Ber = {in_lines(ber)}\n")

    def write(self, name):
        (HERE / name).write_text("\n".join(self.text), encoding="ascii")


def in_lines(octets):
    digits = octets.hex(" ")
    return "\n    ".join(digits[i:i + 99].strip() for i in range(0, len(digits), 99))


def element(number, *contents):
    """One element of DER (X.690 8.1)."""
    content = b"".join(contents)
    if len(content) < 128:
        return bytes((number, len(content))) + content
    length = len(content).to_bytes((len(content).bit_length() + 7) // 8, "big")
    return bytes((number, 0x80 | len(length))) + length + content


def rows_of_types(modules, rows):
    for module, assignment in modules.types():
        kind = names.identifier(assignment.name)
        found = published(module.name, kind)
        ours = values_of(assignment, modules.schema(assignment.name))
        if found is None:
            for name, value in ours:
                rows.add(f"schema of {module.file}", kind, name, encode(value))
            continue
        theirs = [(name, value) for name, value in values_of(assignment, found[0]) if (kind, name) not in NOT_OURS]
        for name, value in theirs:
            rows.add(f"schema of pyasn1_modules {found[1]}", kind, name, encode(value))
        for name, value in ours:
            if encode(value) not in [encode(one) for _, one in theirs]:
                suffix = "OfOurs" if name in [one for one, _ in theirs] else ""
                rows.add(f"schema of {module.file}", kind, name + suffix, encode(value))


def values_of(assignment, schema):
    """The fillings of a schema, but not the one without the numbers that a decoder leaves to the caller."""
    elements = getattr(assignment.type, "elements", ())
    left_alone = any(element.annotation("keepondecode") for element in elements)
    return [(name, value) for name, value in fillings(schema) if not (left_alone and name == "Least")]


# How a record looks that carries a value of each class: its type, and its octets.
CARRIERS = {
    "ALGORITHM-ID": [("AlgorithmIdentifier", lambda oid, value: element(0x30, oid, value))],
    "ATTRIBUTE": [("Attribute", lambda oid, value: element(0x30, oid, element(0x31, value))),
                  ("AttributeTypeAndValue", lambda oid, value: element(0x30, oid, value))],
    "CERT-POLICY-QUALIFIER": [("PolicyQualifierInfo", lambda oid, value: element(0x30, oid, value))],
    "CONTENT-TYPE": [("ContentInfo", lambda oid, value: element(0x30, oid, element(0xA0, value)))],
    "ECONTENT-TYPE": [("EncapsulatedContentInfo",
                       lambda oid, value: element(0x30, oid, element(0xA0, element(0x04, value))))],
    "EXTENSION": [("Extension", lambda oid, value: element(0x30, oid, element(0x04, value)))],
    "INFOTYPEANDVALUE": [("InfoTypeAndValue", lambda oid, value: element(0x30, oid, value))],
    "OCSP-RESPONSE-TYPE": [("ResponseBytes", lambda oid, value: element(0x30, oid, element(0x04, value)))],
    "SIG-POLICY-QUALIFIER": [("SigPolicyQualifierInfo", lambda oid, value: element(0x30, oid, value))],
}
CARRIERS_OF_SET = {
    "SupportedContentTypesLegacy": [("ContentInfoLegacy", CARRIERS["CONTENT-TYPE"][0][1])],
}


def rows_of_sets(modules, rows):
    for module in modules.catalogue.modules:
        for one in module.sets:
            for carrier, octets in CARRIERS_OF_SET.get(one.name, CARRIERS[one.object_class]):
                for member in one.members:
                    add_object(modules, rows, carrier, octets, modules.catalogue.object(member))


def add_object(modules, rows, carrier, octets, carried):
    oid = encode(univ.ObjectIdentifier(modules.catalogue.arcs(carried.arcs)))
    value = encode(univ.Null("")) if carried.type is None else encode(fill(modules.schema(carried.type), True))
    rows.add(f"{carried.name} carries {carried.type or 'no type'}", carrier, "Of" + capital(carried.name),
             octets(oid, value))


def add_nested_message(modules, rows):
    """The one alternative that leads back to its CHOICE."""
    messages = encode(fill(modules.schema("NestedMessageContent"), True))
    rows.add("messages in a message", "PKIBody", "Nested", element(0xB4, messages))


def rows_not_sorted(modules, rows):
    for module, assignment in modules.types():
        if isinstance(assignment.type, model.ListOf) and assignment.type.universal == "SET":
            kind = names.identifier(assignment.name)
            found = published(module.name, kind)
            schema = found[0] if found else modules.schema(assignment.name)
            members = members_of(schema)
            # a list that is written as a SEQUENCE is sorted in its DER as well
            base = univ.SetOf if isinstance(schema, univ.SetOf) else univ.SequenceOf
            rows.add(f"schema of {'pyasn1_modules ' + found[1] if found else module.file}", kind, "NotSorted",
                     encode(list_of_encoded(base, members)), encode_ber(list_of_encoded(base, reversed(members))))


def list_of_encoded(base, members):
    made = base(componentType=univ.Any())
    made.extend(members)
    return made


def members_of(schema):
    """The encodings of two different ones, in order."""
    made = {encode(fill(schema.componentType, every)) for every in (False, True)}
    if len(made) == 1:
        made.add(encode(another(schema.componentType)))
    return sorted(made)


def another(schema):
    if isinstance(schema, univ.Sequence):
        value = structure(schema, False)
        place(value, 0, another(schema.componentType.getTypeByPosition(0)))
        return value
    if isinstance(schema, univ.ObjectIdentifier):
        return schema.clone(OID + ".5")
    if isinstance(schema, univ.Integer):
        return schema.clone(3)
    return schema.clone(encode(univ.Integer(5)) if isinstance(schema, univ.Any) else b"\xa1")


def main():
    modules = Modules()
    rows = Rows()
    rows_of_types(modules, rows)
    add_nested_message(modules, rows)
    rows_of_sets(modules, rows)
    rows.write("types_by_pyasn1.txt")
    rows = Rows()
    rows_not_sorted(modules, rows)
    rows.write("types_not_sorted.txt")


if __name__ == "__main__":
    main()
