"""Makes the C++ of the type catalogue out of ASN.1 modules. See docs/adding_a_type.md."""
