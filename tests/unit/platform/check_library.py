"""The built library: exports what the headers declare and nothing else, and needs no C++ runtime.

Usage: check_library.py LIBRARY HEADER...
"""

import re
import subprocess
import sys
from pathlib import Path


def declared_names(header):
    text = re.sub(r'/\*.*?\*/', '', Path(header).read_text(encoding='utf-8'), flags=re.DOTALL)
    text = re.sub(r'^\s*#.*$', '', text, flags=re.MULTILINE)
    text = re.sub(r'\b(_Static_assert|static_assert|__attribute__)\s*\(.*', ';', text)
    functions = re.findall(r'^(?!typedef)[a-z]\w*[\w\s*]*?\b(\w+)\(', text, flags=re.MULTILINE)
    data = re.findall(r'^extern (?!"C")[\w\s*]*?\b(\w+)(?:\[\])?;', text, flags=re.MULTILINE)
    return set(functions) | set(data)


def lines_of(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout.splitlines()


def main():
    library, *headers = sys.argv[1:]
    declared = set().union(*(declared_names(header) for header in headers))
    exported = {line.split()[-1] for line in lines_of('nm', '-D', '--defined-only', library)}
    undefined = [line.split()[-1] for line in lines_of('nm', '-D', '--undefined-only', library)]
    dynamic = '\n'.join(lines_of('readelf', '-d', library))
    complaints = [f'declared, not exported: {name}' for name in sorted(declared - exported)]
    complaints += [f'exported, not declared: {name}' for name in sorted(exported - declared)]
    complaints += [f'needs the C++ runtime: {name}' for name in undefined if name.startswith(('_Z', '__cxa_guard', '__gxx'))]
    if 'libstdc++' in dynamic:
        complaints.append('needs libstdc++')
    if 'Library soname: [libstpplatform.so]' not in dynamic:
        complaints.append('has another soname')
    print(f'{len(declared)} names declared')
    print(*complaints, sep='\n')
    sys.exit(1 if complaints or not declared else 0)


main()
