#!/usr/bin/perl
# Usage: snmp_info.pl tree|ends CONTEXT PORT MIB-DIRECTORY...
#
# Prints the spanning tree of the agent on a port of 127.0.0.1 as SNMP::Info reads it, which is what Netdisco stores. The
# context may be empty; interfaces have their names in the default one. It asks as alice, whose passphrase is that of the
# tests. "tree" is root and states, "ends" which bridge and port each link leads to.
use strict;
use warnings;

# What SNMP::Info has for bridges, joined with what it has for any device, as its classes of switches do.
package SNMP::Info::Switch;
use SNMP::Info::Bridge;
our @ISA = ('SNMP::Info::Bridge');
our ($INIT, $DEBUG) = (0, 0);
our %MIBS = (%SNMP::Info::MIBS, %SNMP::Info::Bridge::MIBS);
our %GLOBALS = (%SNMP::Info::GLOBALS, %SNMP::Info::Bridge::GLOBALS);
our %FUNCS = (%SNMP::Info::FUNCS, %SNMP::Info::Bridge::FUNCS);
our %MUNGE = (%SNMP::Info::MUNGE, %SNMP::Info::Bridge::MUNGE);

package main;
my ($what, $context, $agent_port, @mib_directories) = @ARGV;
my $switch = SNMP::Info::Switch->new(
  AutoSpecify => 0, IgnoreNetSNMPConf => 1, MibDirs => \@mib_directories, DestHost => '127.0.0.1', RemotePort => $agent_port,
  Timeout => 60_000_000, Retries => 0, Version => 3, SecName => 'alice', SecLevel => 'authPriv', AuthProto => 'SHA',
  AuthPass => 'alice-passphrase', PrivProto => 'AES', PrivPass => 'alice-passphrase') or die "no session\n";
die $switch->error(), "\n" if $switch->error();

my $names = $switch->i_name();
$switch->update(Context => $context) if $context;
my $ports = $switch->bp_index();

sub show { my ($name, @values) = @_; print "$name: ", join(', ', map { $_ // 'unknown' } @values), "\n"; return; }

sub name_of { my ($port) = @_; return $names->{ $ports->{$port} } // "interface $ports->{$port}"; }

sub show_tree {
  show('bridge', $switch->b_mac());
  show('type', $switch->b_type());
  show('ports', $switch->b_ports());
  show('protocol', $switch->stp_ver());
  show('priority', $switch->stp_priority());
  show('root', $switch->stp_root());
  my $root_port = $switch->stp_root_port();
  show('root port', $root_port ? name_of($root_port) : $root_port);
  show('changes', $switch->stp_i_ntop()->{0});
  my ($states, $admin, $oper) = ($switch->i_stp_state(), $switch->is_edgeport_admin(), $switch->is_edgeport_oper());
  for my $port (sort { $a <=> $b } keys %{$ports}) {
    show(name_of($port), $states->{ $ports->{$port} }, 'admin edge ' . ($admin->{$port} // 'unknown'),
      'edge ' . ($oper->{$port} // 'unknown'));
  }
  return;
}

sub show_ends {
  my ($bridges, $ends) = ($switch->i_stp_bridge(), $switch->i_stp_port());
  for my $port (sort { $a <=> $b } keys %{$ports}) {
    my $index = $ports->{$port};
    show(name_of($port), 'bridge ' . ($bridges->{$index} // 'unknown'), 'port ' . ($ends->{$index} // 'unknown'));
  }
  return;
}

$what eq 'ends' ? show_ends() : show_tree();
