"""A small reader and writer of DER for tests that change a message in one place and say where."""


class Node:
    """One element. `offset` is where it stood in what was parsed."""

    def __init__(self, tag, content=b"", children=None, offset=0):
        self.tag = tag
        self.content = content
        self.children = children
        self.offset = offset

    def __getitem__(self, index):
        return self.children[index]

    def encode(self):
        content = self.content if self.children is None else b"".join(child.encode() for child in self.children)
        return bytes([self.tag]) + encode_length(len(content)) + content

    def first(self, tag):
        """The first child of that tag."""
        return next(child for child in self.children if child.tag == tag)


def encode_length(length):
    if length < 128:
        return bytes([length])
    octets = length.to_bytes((length.bit_length() + 7) // 8, "big")
    return bytes([0x80 | len(octets)]) + octets


def der(tag, *contents):
    content = b"".join(contents)
    return bytes([tag]) + encode_length(len(content)) + content


def parse_all(data, start, end):
    nodes = []
    while start < end:
        tag, length, position = data[start], data[start + 1], start + 2
        if length >= 128:
            count = length & 0x7F
            length = int.from_bytes(data[position:position + count], "big")
            position += count
        content = data[position:position + length]
        children = parse_all(data, position, position + length) if tag & 0x20 else None
        nodes.append(Node(tag, content, children, start))
        start = position + length
    return nodes


def parse(data):
    """The first element, with those within it."""
    return parse_all(data, 0, len(data))[0]
