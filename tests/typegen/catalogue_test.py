"""What the real modules must be."""

import re
import sys
import unittest
from pathlib import Path

HERE = Path(__file__).resolve().parent
ROOT = HERE.parent.parent
sys.path.insert(0, str(ROOT / "tools"))

from typegen import catalogue, checks, emit_description, model, names, output, parser  # noqa: E402
from typegen.plan import Planner  # noqa: E402

# The SET OF types: their encoders sort (X.690 11.6). The three marked ones are written with the tag of SEQUENCE.
SORTED = set(
    """CrossCertificates _SetOfAttributeType* AttributeRaw_valuesRaw AttributesRaw DigestAlgorithmIdentifiers
    UnauthAttributes CertificateSet CertificateRevocationLists RecipientInfos UnprotectedAttributes AuthAttributes
    SignerInfos CertificateSetRaw RevocationInfoChoices SignedAttributes UnsignedAttributes SignerInfosLegacy
    ExtensionAttributes Attribute_values RelativeDistinguishedName PresentationAddress_nAddresses
    _SetOfPCI_Attribute* _SetOfAttribute*""".split()
)
ARRAYS = set(
    """_SetOfAttributeType QTNoticeReference_noticeNumbers _extKeyUsage_ExtnType NameForms_otherNameForms
    CertPolicySet PKIFreeText NoticeReference_noticeNumbers PresentationAddress_nAddresses POPODecKeyRespContent
    AcceptableResponses""".split()
)
SETS = set("PersonalName TeletexPersonalName PDSParameter UnformattedPostalAddress".split())
# The types whose decoders take the end-of-contents octets of what they opened.
CLOSING = set(
    """SignerIdentifier CertificateChoices OriginatorInfo RecipientIdentifier OriginatorIdentifierOrKey
    KeyAgreeRecipientIdentifier PasswordRecipientInfo RecipientInfo EncapsulatedContentInfo AuthenticatedData
    CertificateChoicesRaw RevocationInfoChoice ContentInfo ContentInfoLegacy RSAES_OAEP_params RSASSA_PSS_params
    PBKDF2_params_salt SharedInfo TR34EncryptedData""".split()
)
EXTENSIBLE = {"Gost28147_89_BlobParameters"}
TABLES = set(
    """AlgorithmIdentifier Attribute AttributeTypeAndValue Extension ContentInfo ContentInfoLegacy
    EncapsulatedContentInfo InfoTypeAndValue PolicyQualifierInfo SigPolicyQualifierInfo ResponseBytes""".split()
)
PATHS = set(
    """pvalue->numbits pvalue->numocts pvalue->n pvalue->count pvalue->value pvalue->type pvalue->number
    pvalue->sub_address pvalue->micros pvalue->millis pvalue->keyLength pvalue->iterationCount
    pvalue->macKey.numocts pvalue->name.nchars pvalue->u.utf8String pvalue->u.ia5String pvalue->u.visibleString
    pvalue->u.bmpString.nchars pvalue->u.printableString pvalue->u.teletexString pvalue->u.universalString.nchars
    pvalue->u.numericString pvalue->u.x121_dcc_code pvalue->u.iso_3166_alpha2_code pvalue->u.numeric
    pvalue->u.printable pvalue->generation_qualifier pvalue->initials pvalue->given_name pvalue->surname
    pvalue->extension_attribute_type pvalue->teletex_string pvalue->printable_string pvalue->u.numeric_code
    pvalue->u.printable_code pvalue->elem[xx1] *pvalue""".split()
)
SET_SIZES = {
    "ExtensionSet": 36, "SupportedAlgorithms": 24, "SupportedAttributes": 45, "SupportedContentTypes": 6,
    "SupportedContentTypesLegacy": 6, "SupportedEContentTypes": 8, "SupportedInfos": 17,
    "SupportedOCSPResponseTypes": 1, "SupportedPolicyQualifiers": 2, "SupportedSigPolicyQualifiers": 0,
}


class RealModules(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.expected = catalogue.read(ROOT / "asn1data" / "catalogue.txt")
        paths = sorted((ROOT / "asn1data" / "modules").glob("*.asn1"))
        modules = [parser.parse_file(path, path.name) for path in paths]
        cls.catalogue = model.Catalogue(catalogue.in_order(modules, cls.expected), cls.expected)
        checks.check(cls.catalogue)
        cls.plans = Planner(cls.catalogue).plans()
        cls.text = output.generate(cls.catalogue)

    def named(self, wanted):
        """The names of the plans that `wanted` holds for."""
        return {names.identifier(plan.name) for plan in self.plans if wanted(plan)}

    def test_a_file_is_named_as_its_module(self):
        for module in self.catalogue.modules:
            self.assertEqual(module.file, module.name + ".asn1")

    def test_the_catalogue_lists_531_types_once_each(self):
        listed = [name for _, types in self.expected for name in types if name != "_characterString_Type"]
        self.assertEqual(len(self.expected), 21)
        self.assertEqual(len(listed), 531)
        self.assertEqual(len(set(listed)), 531)

    def test_every_listed_type_is_written(self):
        for module, (name, types) in zip(self.catalogue.modules, self.expected):
            self.assertEqual((module.name, [names.identifier(one.name) for one in module.types]), (name, list(types)))
        self.assertEqual(len(self.catalogue.modules), len(self.expected))

    def test_every_object_carries_a_written_type(self):
        carried = [one.type for module in self.catalogue.modules for one in module.objects if one.type is not None]
        self.assertEqual([one for one in carried if self.catalogue.type(one) is None], [])
        objects = [one for module in self.catalogue.modules for one in module.objects]
        self.assertEqual(len(objects), 152)
        self.assertEqual(len(objects) - len(carried), 3)  # dsaSHA_1 and the two policy qualifiers

    def test_a_set_is_made_of_all_its_members(self):
        header = self.text["information_objects.h"]
        found = re.findall(r"class (\w+) : public Quillmark::detail::ObjectSet<\w+, (\d+)>", header)
        self.assertEqual({name: int(count) for name, count in found}, SET_SIZES)
        for module in self.catalogue.modules:
            for one in module.sets:
                made = re.search(rf"^{one.name}::{one.name}\(.*?\}}\)", self.text[module.name + ".cpp"], re.M | re.S)
                self.assertEqual(
                    re.findall(r"make_unique<(\w+)>", made.group()), [names.identifier(name) for name in one.members]
                )

    def test_every_set_is_whole(self):
        sizes = {one.name: len(one.members) for module in self.catalogue.modules for one in module.sets}
        self.assertEqual(sizes, SET_SIZES)

    def test_sets_of_are_sorted_and_nothing_else_is(self):
        found = {
            name + ("*" if name in self.named(lambda plan: plan.universal == "SEQUENCE") else "")
            for name in self.named(lambda plan: plan.sorted)
        }
        self.assertEqual(found, SORTED)

    def test_arrays_are_those_told(self):
        self.assertEqual(self.named(lambda plan: plan.construct == "array"), ARRAYS)

    def test_sets_are_those_told(self):
        self.assertEqual(self.named(lambda plan: plan.construct == "set"), SETS)

    def test_types_that_take_their_ends_are_those_told(self):
        self.assertEqual(self.named(lambda plan: plan.closes), CLOSING)

    def test_extensible_types_are_those_told(self):
        self.assertEqual(self.named(lambda plan: plan.extension is not None), EXTENSIBLE)

    def test_tables_are_those_told(self):
        self.assertEqual(self.named(lambda plan: plan.table is not None), TABLES)

    def test_every_path_is_one_of_the_closed_list(self):
        self.assertEqual(len(PATHS), 37)
        found = set()
        for text in self.text.values():
            found.update(re.findall(r'check_(?:range|minimum)\([^"]*"([^"]*)"', text))
        self.assertEqual(found, PATHS)

    def test_every_type_is_described_for_tests(self):
        text = emit_description.description(self.catalogue)
        described = re.findall(r'^    \.name = "([^"]+)",\n    \.module = "([^"]+)"', text, re.M)
        written = [(one.name, module.name) for module in self.catalogue.modules for one in module.types]
        self.assertEqual(described, written)

    def test_no_type_contains_itself_but_through_a_level_that_is_counted(self):
        nesting = self.named(lambda plan: plan.nests)
        self.assertEqual(nesting, {"NestedMessageContent"})


if __name__ == "__main__":
    unittest.main()
