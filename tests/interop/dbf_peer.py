#!/usr/bin/python3
"""Black-box peer of the interoperability tests: reads and writes dBASE tables with two
independent Python libraries (dbfread and dbf) and prints what they see, in a plain form the
C++ tests compare with the engine's own view.

Output, one line each:
  FIELD <name> <type> <length> <decimals>
  R <hex> <hex> ...      a live record, in file order; each value hex-encoded (latin-1)
  D <hex> <hex> ...      a deleted record, in file order
Values are normalised: text without trailing blanks; numbers with the field's decimals, empty
when blank; dates as CCYYMMDD, empty when blank; truth as T, F or ?; memo text, empty for none.

Usage:
  dbf_peer.py dump dbfread|dbf <table>
  dbf_peer.py write db3|fp <table> [memo block size]
"""
import datetime
import sys


def norm(ftype, decimals, value):
    if ftype == 'L':
        if value is None:
            return '?'
        return 'T' if bool(value) else 'F'
    if value is None:
        return ''
    if ftype in ('N', 'F'):
        return '%.*f' % (decimals, float(value))
    if ftype == 'D':
        return value.strftime('%Y%m%d')
    if isinstance(value, bytes):
        value = value.decode('latin-1')
    value = str(value)
    if ftype == 'C':
        value = value.rstrip(' ')
    return value


def hexed(text):
    return text.encode('latin-1').hex() or '-'


def emit(kind, values):
    print(kind + ' ' + ' '.join(hexed(v) for v in values))


def dump_dbfread(path):
    import dbfread
    # Records as lists of pairs: a table may hold two fields of one name.
    table = dbfread.DBF(path, encoding='latin-1', char_decode_errors='strict', recfactory=None)
    fields = [(f.name, f.type, f.length, f.decimal_count) for f in table.fields]
    for name, ftype, length, decimals in fields:
        print('FIELD %s %s %d %d' % (name, ftype, length, decimals))
    for record in table:
        emit('R', [norm(t, d, pair[1]) for (_, t, _, d), pair in zip(fields, record)])
    for record in table.deleted:
        emit('D', [norm(t, d, pair[1]) for (_, t, _, d), pair in zip(fields, record)])


def dump_dbf(path):
    import dbf
    table = dbf.Table(path, codepage='cp1252')
    table.open(dbf.READ_ONLY)
    fields = []
    for name in table.field_names:
        info = table.field_info(name)
        ftype = info[0]
        ftype = chr(ftype) if isinstance(ftype, int) else str(ftype)
        fields.append((name.upper(), ftype[:1], info[1], info[2], name))
    for name, ftype, length, decimals, _ in fields:
        print('FIELD %s %s %d %d' % (name, ftype, length, decimals))
    live, deleted = [], []
    for record in table:
        values = []
        for _, ftype, _, decimals, key in fields:
            value = record[key]
            if ftype == 'D' and value is not None and not isinstance(value, datetime.date):
                value = value.date() if value else None
            if ftype == 'L' and value is not None and not isinstance(value, bool):
                value = None if value is dbf.Unknown or str(value) == '?' else bool(value)
            values.append(norm(ftype, decimals, value))
        (deleted if dbf.is_deleted(record) else live).append(values)
    table.close()
    for values in live:
        emit('R', values)
    for values in deleted:
        emit('D', values)


# What the writers put in: name, amount, date, truth, memo (the memo only in FoxPro tables).
ROWS = [
    ('Alpha', 12.5, datetime.date(2021, 3, 4), True, 'first memo'),
    ('Beta', -3.25, None, False, ''),
    ('Gamma', 0, datetime.date(1999, 12, 31), None, 'x' * 600),
    ('Delta', 123456.78, datetime.date(2000, 2, 29), True, 'line one\r\nline two'),
    ('', None, None, None, None),
]
DELETED = {1}


def write_table(kind, path, block_size):
    import dbf
    if kind == 'db3':
        layout = 'NAME C(20); AMOUNT N(12,2); SEEN D; OK L'
        table = dbf.Table(path, layout, dbf_type='db3')
        types = [('C', 0), ('N', 2), ('D', 0), ('L', 0)]
    else:
        layout = 'NAME C(20); AMOUNT N(12,2); SEEN D; OK L; NOTE M; RATE F(10,3)'
        options = {'dbf_type': 'fp'}
        if block_size:
            options['memo_size'] = block_size
        table = dbf.Table(path, layout, **options)
        types = [('C', 0), ('N', 2), ('D', 0), ('L', 0), ('M', 0), ('F', 3)]
    table.open(dbf.READ_WRITE)
    expected = []
    for index, row in enumerate(ROWS):
        values = list(row[:4])
        if kind != 'db3':
            values.append(row[4])
            values.append(None if row[1] is None else row[1] / 8.0)
        record_values = tuple('' if (v is None and t in ('C', 'M')) else v
                              for v, (t, _) in zip(values, types))
        table.append(record_values)
        if index in DELETED:
            dbf.delete(table[-1])
        normed = [norm(t, d, v) for v, (t, d) in zip(values, types)]
        if kind != 'db3':
            # A memo written empty reads as no memo.
            normed[4] = normed[4] or ''
        expected.append((index in DELETED, normed))
    table.close()
    for is_deleted, values in expected:
        if not is_deleted:
            emit('R', values)
    for is_deleted, values in expected:
        if is_deleted:
            emit('D', values)


def main(argv):
    if len(argv) >= 4 and argv[1] == 'dump':
        {'dbfread': dump_dbfread, 'dbf': dump_dbf}[argv[2]](argv[3])
        return 0
    if len(argv) >= 4 and argv[1] == 'write':
        write_table(argv[2], argv[3], int(argv[4]) if len(argv) > 4 else 0)
        return 0
    sys.stderr.write(__doc__)
    return 2


if __name__ == '__main__':
    sys.exit(main(sys.argv))
