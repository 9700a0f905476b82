def check(c): pass
