"""UCD-DLMOD-MIB, by which a running agent loads and unloads its modules."""

# dlmodStatus, of the first module in the configuration and of the second, and its values.
STATUS = '.1.3.6.1.4.1.2021.13.14.2.1.5'
FIRST, SECOND = f'{STATUS}.1', f'{STATUS}.2'
LOADED, UNLOADED, LOAD, UNLOAD = 1, 2, 4, 5
NO_ERROR = 0


def loaded(snmp):
    """Which is another row after each hang-up."""
    return [row.oid for row in snmp.walk(STATUS) if row.value == LOADED]


def unload(client, module=FIRST):
    _set_status(client, module, UNLOAD, UNLOADED)


def load(client, module=FIRST):
    _set_status(client, module, LOAD, LOADED)


def _set_status(client, module, wanted, reached):
    assert client.set_integer(module, wanted).error_status == NO_ERROR
    assert client.get(module).number == reached
