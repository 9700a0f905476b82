#!/usr/bin/env python3
"""Sees to it that every exported function is called by a row of the tables of operations: its name must be among those
that the object files of the tables leave to the linker."""

import argparse
import pathlib
import re
import subprocess
import sys

# Data and type information, which nobody calls.
DATA = re.compile(r"_ZT[ISV]|g_\w+$|rtCtypeTable$|OS_daysInMonth$|_ZN9ASN1CTime11daysInMonthE$"
                  r"|_ZN9Quillmark13CDateTimeSpan\d+one")

# Private and protected functions, and those that run with others: what calls each of them is in a row.
REACHED_THROUGH_OTHERS = {
    "ASN1CBitStr::checkCapacity(unsigned int)": "ASN1CBitStr::set",
    "ASN1CBitStr::recalculate()": "ASN1CBitStr::doAnd",
    "ASN1CSeqOfListIterator::ASN1CSeqOfListIterator(ASN1CSeqOfList&, _Asn1RTDListNode*)": "ASN1CSeqOfList::iterator",
    "ASN1CType::ASN1CType(ASN1Context&)": "the constructors of ASN1CSeqOfList and others",
    "ASN1CTime::ASN1CTime(char*&, int, unsigned char)": "the constructors of ASN1CGeneralizedTime",
    "ASN1CTime::ASN1CTime(char const*&, unsigned char)": "the constructors of ASN1CGeneralizedTime",
    "ASN1CTime::ASN1CTime(ASN1Context&, char*&, int, unsigned char)": "the constructors of ASN1CGeneralizedTime",
    "ASN1CTime::ASN1CTime(ASN1Context&, char const*&, unsigned char)": "the constructors of ASN1CGeneralizedTime",
    "ASN1CTime::ASN1CTime(ASN1MessageBufferIF&, char*&, int, unsigned char)":
        "the constructors of ASN1CGeneralizedTime",
    "ASN1CTime::ASN1CTime(ASN1MessageBufferIF&, char const*&, unsigned char)":
        "the constructors of ASN1CGeneralizedTime",
    "ASN1BERMessageBuffer::~ASN1BERMessageBuffer()": "the destructors of ASN1BEREncodeBuffer and ASN1BERDecodeBuffer",
    "ASN1MessageBufferIF::~ASN1MessageBufferIF()": "the destructors of all buffers",
    "ASN1Context::~ASN1Context()": "ASN1Context::_unref",
    "ASN1RTLException::~ASN1RTLException()": "an exception that is caught",
    "ASN1MessageBuffer::RTLError::~RTLError()": "an exception that is caught",
    "Quillmark::PKI::TSP::CMSStampImpl::update()": "CMSStamp::sign",
}


def names(lines):
    return [line for line in (line.strip() for line in lines) if line and not line.startswith("#")]


def one_of_each(name):
    """Constructors and destructors have a name for complete objects and one for bases, and some one for `delete`."""
    return re.sub(r"C2E", "C1E", re.sub(r"D[02]Ev$", "D1Ev", name))


def readable(mangled):
    text = "\n".join(mangled)
    return subprocess.run(["c++filt"], input=text, text=True, capture_output=True, check=True).stdout.splitlines()


def called_names(nm, objects):
    output = subprocess.run([nm, "-u", "--format=just-symbols", *objects], text=True, capture_output=True,
                            check=True).stdout
    return {one_of_each(name) for name in names(output.splitlines())}


def service_functions(path):
    return re.findall(r"^\s+(\w+);$", path.read_text(encoding="utf-8").split("local:")[0], re.MULTILINE)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--list", required=True, type=pathlib.Path)
    parser.add_argument("--service", required=True, type=pathlib.Path)
    parser.add_argument("--nm", default="nm")
    parser.add_argument("objects", nargs="+")
    options = parser.parse_args()

    listed = names(options.list.read_text(encoding="utf-8").splitlines())
    wanted = {one_of_each(name) for name in listed if not DATA.match(name)}
    wanted |= set(service_functions(options.service))
    missing = sorted(wanted - called_names(options.nm, options.objects))
    complaints = [f"in no table of operations: {name}  {text}" for name, text in zip(missing, readable(missing))
                  if text not in REACHED_THROUGH_OTHERS]
    stale = set(REACHED_THROUGH_OTHERS) - set(readable(sorted(wanted)))
    complaints += [f"not exported any more: {name}" for name in sorted(stale)]
    print("\n".join(complaints) or f"{len(wanted)} exported functions are in the tables")
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main())
