#!/usr/bin/perl
# Perl's DBD::Firebird as a peer: answers the requests that bench/support/worker.h describes.
use strict;
use warnings;
use DBI;
use JSON::PP;
use Time::HiRes qw(time);

my $json = JSON::PP->new->canonical->allow_nonref;
my $database;
my $held;

# Dates and timestamps in full, with their fractions of a second.
sub attach {
    my ($name) = @_;
    my $source =
        $name =~ m{^(.*?)/(\d+):(.*)$}
        ? "dbi:Firebird:db=$3;host=$1;port=$2"
        : "dbi:Firebird:db=$name";
    $database = DBI->connect($source . ';ib_dialect=3',
        'SYSDBA', 'masterkey', {AutoCommit => 0, RaiseError => 1, PrintError => 0});
}

sub read_people {
    my ($sql) = @_;
    my $statement = $database->prepare($sql,
        {ib_timestampformat => 'ISO', ib_dateformat => 'ISO', ib_timeformat => 'ISO'});
    $statement->execute;
    my $rows = $statement->fetchall_arrayref;
    $statement->finish;
    return $rows;
}

sub sums_of {
    my ($rows, $seconds) = @_;
    my ($id, $credit) = (0, 0);
    for my $row (@$rows) {
        $id += $row->[0];
        $credit += sprintf('%.0f', $row->[3] * 100) if defined $row->[3];
    }
    return {seconds => $seconds, rows => scalar(@$rows), id => $id, credit => $credit};
}

# A loop that prints records of fixed width, as a DBF file has them behind its header.
sub export_records {
    my ($request) = @_;
    my $start = time;
    my $statement = $database->prepare($request->{sql}, {ib_timestampformat => '%Y%m%d', ib_dateformat => '%Y%m%d'});
    $statement->execute;
    open my $file, '>:raw', $request->{file} or die $!;
    my $count = 0;
    while (my $row = $statement->fetchrow_arrayref) {
        printf {$file} $request->{format}, map { defined $_ ? $_ : '' } @$row;
        ++$count;
    }
    print {$file} "\x1a";
    close $file or die $!;
    $statement->finish;
    $database->commit;
    return {seconds => time - $start, rows => $count};
}

# One prepared statement, one execution for each record, one transaction.
sub insert {
    my ($request) = @_;
    my $length = 1;
    $length += $_ for @{$request->{fields}};
    my $template = 'x1' . join('', map {"A$_"} @{$request->{fields}});
    my $start = time;
    open my $file, '<:raw', $request->{dbf} or die $!;
    seek $file, $request->{start}, 0;
    (my $sql = $request->{sql}) =~ s/:\w+/?/g;
    my $statement = $database->prepare($sql);
    my ($record, $count) = ('', 0);
    while (read($file, $record, $length) == $length) {
        my ($id, $name, $city, $credit, $born) = unpack $template, $record;
        $credit =~ s/^ +//;
        $statement->execute($id + 0, $name, $city, $credit, join('-', unpack('A4A2A2', $born)));
        ++$count;
    }
    $statement->finish;
    $database->commit;
    return {seconds => time - $start, rows => $count};
}

my %commands = (
    attach => sub { attach($_[0]{database}); {} },
    detach => sub { $database->disconnect; undef $database; {} },
    select => sub {
        my $start = time;
        my $rows = read_people($_[0]{sql});
        my $seconds = time - $start;
        $database->commit;
        return sums_of($rows, $seconds);
    },
    hold => sub { $held = read_people($_[0]{sql}); return sums_of($held, 0) },
    sample => sub { my $rows = read_people($_[0]{sql}); $database->commit; return {rows => $rows} },
    insert => \&insert,
    export => \&export_records,
);

$| = 1;
while (my $line = <STDIN>) {
    my $reply = eval {
        my $request = $json->decode($line);
        my $command = $commands{$request->{do}} or die "no such request: $request->{do}";
        $command->($request);
    };
    $reply = {error => "$@"} unless defined $reply;
    print $json->encode($reply), "\n";
}
