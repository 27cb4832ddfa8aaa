// Usage: node read.js PORT [CONTEXT]
//
// Prints the spanning tree of the agent on a port of 127.0.0.1 as the JavaScript stack of npm's net-snmp reads it. With a
// context, that of the context, asked for as alice, whose passphrase is that of the tests.
'use strict';
const snmp = require('net-snmp');

const BASE = '1.3.6.1.2.1.17';
const IF_NAME = '1.3.6.1.2.1.31.1.1.1.1';
const STATES = ['', 'disabled', 'blocking', 'listening', 'learning', 'forwarding', 'broken'];

const [port, context] = process.argv.slice(2);
const options = { port: Number(port), timeout: 60000, retries: 0 };

const passphrase = 'alice-passphrase';
const alice = {
  name: 'alice', level: snmp.SecurityLevel.authPriv, authProtocol: snmp.AuthProtocols.sha, authKey: passphrase,
  privProtocol: snmp.PrivProtocols.aes, privKey: passphrase,
};
// Interfaces have their names in the default context.
const interfacesSession = snmp.createSession('127.0.0.1', 'public', { ...options, version: snmp.Version2c });
const treeSession = context ? snmp.createV3Session('127.0.0.1', alice, { ...options, context }) : interfacesSession;

function checked(binding) {
  if (snmp.isVarbindError(binding)) {
    throw new Error(snmp.varbindError(binding));
  }
  return binding.value;
}

function get(session, ...names) {
  return new Promise((resolve, reject) => {
    session.get(names, (error, bindings) => (error ? reject(error) : resolve(bindings.map(checked))));
  });
}

// Values by the last number of their names.
function walk(session, column) {
  const rows = new Map();
  return new Promise((resolve, reject) => {
    session.subtree(column, 20, (bindings) => {
      bindings.forEach((binding) => rows.set(Number(binding.oid.split('.').pop()), checked(binding)));
    }, (error) => (error ? reject(error) : resolve(rows)));
  });
}

async function read() {
  const [address, root, cost, rootPort] = await get(
    treeSession, ...['1.1.0', '2.5.0', '2.6.0', '2.7.0'].map((name) => `${BASE}.${name}`));
  const interfaces = await walk(treeSession, `${BASE}.1.4.1.2`);
  const states = await walk(treeSession, `${BASE}.2.15.1.3`);
  const names = await walk(interfacesSession, IF_NAME);
  const nameOf = (number) => names.get(interfaces.get(number)).toString();
  console.log(`bridge: ${address.toString('hex')}`);
  console.log(`root: ${root.toString('hex')}, cost ${cost}, by ${rootPort ? nameOf(rootPort) : 'itself'}`);
  states.forEach((state, number) => console.log(`${nameOf(number)}: ${STATES[state]}`));
}

read().catch((error) => {
  console.error(error.message);
  process.exitCode = 1;
}).finally(() => new Set([interfacesSession, treeSession]).forEach((session) => session.close()));
