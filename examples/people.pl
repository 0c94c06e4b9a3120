#!/usr/bin/perl
# The C interface from Perl: what people.c does, with FFI::Platypus (Debian: libffi-platypus-perl).
#
#     people.pl people.fdb
#
# The library is libzmfbconn.so.2, or the file that ZMFB_LIBRARY names.
use strict;
use warnings;
use JSON::PP ();
use FFI::Platypus 1.00;
use FFI::Platypus::Buffer qw(scalar_to_buffer buffer_to_scalar);

my $ffi = FFI::Platypus->new(api => 1, lib => $ENV{ZMFB_LIBRARY} // 'libzmfbconn.so.2');
$ffi->type('(opaque, opaque, size_t, opaque)->int' => 'body');
$ffi->attach(["zmfb_$_->[0]" => $_->[0]], $_->[1], $_->[2]) for (
    [message        => []                                                => 'string'],
    [new            => []                                                => 'opaque'],
    [free           => ['opaque']                                        => 'void'],
    [kind_of        => ['opaque']                                        => 'int'],
    [prepare        => ['string']                                        => 'int'],
    [create_database => ['string', 'string', 'string']                   => 'int'],
    [connect        => ['opaque', 'string', 'string', 'string', 'string'] => 'int'],
    [call           => ['opaque', 'string', 'opaque[]', 'size_t', 'opaque'] => 'int'],
    [call_area      => ['string', 'opaque[]', 'size_t', 'opaque']        => 'int'],
    [eval           => ['opaque', 'opaque[]', 'size_t', 'opaque']        => 'int'],
    [get_member     => ['opaque', 'string', 'opaque']                    => 'int'],
    [set_error_block => ['opaque']                                       => 'int'],
    [set_text       => ['opaque', 'opaque', 'size_t']                    => 'int'],
    [set_array      => ['opaque', 'size_t']                              => 'int'],
    [set_logical    => ['opaque', 'int']                                 => 'int'],
    [set_number     => ['opaque', 'double', 'int', 'int']                => 'int'],
    [set_block      => ['opaque', 'body', 'opaque', 'opaque']            => 'int'],
    [append         => ['opaque', 'opaque']                              => 'int'],
    [new_transaction => []                                               => 'opaque'],
    [free_transaction => ['opaque']                                      => 'void'],
    [begin          => ['opaque', 'opaque', 'int']                       => 'int'],
    [commit         => ['opaque']                                        => 'int'],
    [new_statement  => []                                                => 'opaque'],
    [free_statement => ['opaque']                                        => 'void'],
    [prepare_statement => ['opaque', 'opaque', 'string']                 => 'int'],
    [bind_null      => ['opaque', 'size_t']                              => 'int'],
    [bind_text      => ['opaque', 'size_t', 'opaque', 'size_t']          => 'int'],
    [bind_number    => ['opaque', 'size_t', 'sint64', 'int']             => 'int'],
    [bind_date      => ['opaque', 'size_t', 'sint32[7]']                 => 'int'],
    [execute        => ['opaque', 'sint64*']                             => 'int'],
    [query          => ['opaque']                                        => 'int'],
    [next           => ['opaque']                                        => 'int'],
    [column_count   => ['opaque', 'size_t*']                             => 'int'],
    [field_is_null  => ['opaque', 'size_t', 'int*']                      => 'int'],
    [field_text     => ['opaque', 'size_t', 'opaque*', 'size_t*']        => 'int'],
    [get_text       => ['opaque', 'opaque*', 'size_t*']                  => 'int'],
    [get_number     => ['opaque', 'double*', 'opaque', 'opaque']         => 'int'],
    [get_logical    => ['opaque', 'int*']                                => 'int'],
    [get_size       => ['opaque', 'size_t*']                             => 'int'],
    [get_element    => ['opaque', 'size_t', 'opaque']                    => 'int'],
);
use constant { TEXT => 1, NUMBER => 2, LOGICAL => 3, ARRAY => 5 };
use constant { OK => 0, WRONG_KIND => 2, END_OF_ROWS => 7 };
use constant { READ_WRITE => 0, READ_ONLY => 1 };

sub must { my ($status) = @_; die main::message() . "\n" if $status != OK; }

# A new place that holds a Perl value: a text, a number by reference (\21), a boolean of JSON::PP, an array, or a
# closure as a code block.
sub place {
    my ($value) = @_;
    my $place = main::new();
    if (ref $value eq 'ARRAY') {
        must(set_array($place, 0));
        for my $element (@$value) {
            my $part = place($element);
            must(append($place, $part));
            free($part);
        }
    } elsif (ref $value eq 'JSON::PP::Boolean') {
        must(set_logical($place, $value));
    } elsif (ref $value eq 'FFI::Platypus::Closure') {
        must(set_block($place, $value, undef, undef));
    } elsif (ref $value eq 'SCALAR') {
        must(set_number($place, $$value, 0, 0));
    } elsif (defined $value) {
        must(set_text($place, scalar_to_buffer($value)));
    }
    return $place;
}

# The value in a place as Perl has it; NIL is undef.
sub value {
    my ($place) = @_;
    my $kind = kind_of($place);
    if ($kind == TEXT) {
        must(get_text($place, \my $start, \my $length));
        return $length ? buffer_to_scalar($start, $length) : '';
    } elsif ($kind == NUMBER) {
        must(get_number($place, \my $number, undef, undef));
        return $number;
    } elsif ($kind == LOGICAL) {
        must(get_logical($place, \my $logical));
        return $logical;
    } elsif ($kind == ARRAY) {
        must(get_size($place, \my $size));
        my ($element, @elements) = (main::new());
        for my $index (1 .. $size) {
            must(get_element($place, $index, $element));
            push @elements, value($element);
        }
        free($element);
        return \@elements;
    }
    return undef;
}

# Runs a function with places for the values: (status, what it gave).
sub run {
    my ($function, @values) = @_;
    my @places = map { place($_) } @values;
    my $result = main::new();
    my $status = $function->(\@places, scalar @places, $result);
    my $given  = value($result);
    free($_) for @places, $result;
    return ($status, $given);
}

sub call_method {
    my ($object, $method, @values) = @_;
    return run(sub { main::call($object, $method, @_) }, @values);
}

# The places that the library hands to a body.
sub arguments { my ($list, $count) = @_; return @{$ffi->cast('opaque' => "opaque[$count]", $list)}; }

@ARGV == 1 or die "usage: people.pl DATABASE\n";
my ($database) = @ARGV;
must(prepare($database));
must(create_database($database, 'SYSDBA', undef));
my $connection = main::new();
must(main::connect($connection, $database, 'SYSDBA', undef, undef));
call_method($connection, 'createtable', 'people',
    [['name', 'C', \10, \0], ['born', 'D', \8, \0], ['credit', 'N', \12, \2]]);

# Both or none: a transaction that is not committed is rolled back.
my ($work, $insert) = (new_transaction(), new_statement());
must(begin($work, $connection, READ_WRITE));
must(prepare_statement($insert, $work, 'insert into people (name, born, credit) values (?, ?, ?)'));
for (['Anna', [2007, 3, 1, 0, 0, 0, 0], -1250], ['Bo', undef, 0]) {
    my ($name, $born, $cents) = @$_;
    must(bind_text($insert, 1, scalar_to_buffer($name)));
    must(defined $born ? bind_date($insert, 2, $born) : bind_null($insert, 2));
    must(bind_number($insert, 3, $cents, 2));
    must(execute($insert, \my $added));
    print "$added added\n";
}
must(commit($work));
free_statement($insert);

sub field {
    my ($row, $index) = @_;
    must(field_is_null($row, $index, \my $is_null));
    return 'NULL' if $is_null;
    must(field_text($row, $index, \my $start, \my $length));
    return $length ? buffer_to_scalar($start, $length) : '';
}

my ($query, $status) = (new_statement());
must(begin($work, $connection, READ_ONLY));
must(prepare_statement($query, $work,
    'select name, cast(born as date), credit from people where credit <= ? order by name'));
must(bind_number($query, 1, 0, 0));
must(query($query));
must(column_count($query, \my $columns));
while (($status = main::next($query)) == OK) {
    print join(' | ', map { field($query, $_) } 1 .. $columns), "\n";
}
must($status) if $status != END_OF_ROWS;    # the rows broke off half-way
free_statement($query);
free_transaction($work);

# Runs an operation of work areas.
sub area {
    my ($operation, @values) = @_;
    my ($status, $given) = run(sub { call_area($operation, @_) }, @values);
    must($status);
    return $given;
}

# A work area: finds Bo in any case of letters, changes him under a lock, and goes through all.
call_method($connection, 'setibrdd');    # areas are on its tables
area('dbusearea', JSON::PP::true, undef, 'people', undef, JSON::PP::true);
area('ordcreate', 'name', 'UPPER(NAME)');
if (area('dbseek', 'BO') && area('rlock')) {
    area('fieldput', 'credit', \7.5);
    area('dbunlock');
}
for (area('dbgotop'); !area('eof'); area('dbskip')) {
    printf "record %d has %.2f\n", area('recno'), area('fieldget', 'credit');
}
area('dbclosearea');

my $twice = $ffi->closure(sub {
    my (undef, $list, $count, $result) = @_;
    my ($first) = arguments($list, $count);
    return WRONG_KIND if kind_of($first) != NUMBER;
    return set_number($result, 2 * value($first), 0, 0);
});
my $block = place($twice);
my $eval  = sub { main::eval($block, @_) };
my (undef, $doubled) = run($eval, \21);
print "twice 21 is $doubled\n";
($status) = run($eval, 'no number');
print 'twice a text: ', $status == WRONG_KIND ? 'refused' : 'taken', "\n";

my $array = place(["a\0b"]);
print 'bytes: ', join(' ', map { sprintf '%02x', ord } split //, value($array)->[0]), "\n";

($status) = call_method($connection, 'nosuch');
print "without an error block: status $status, ", main::message(), "\n";
my $tell = $ffi->closure(sub {
    my (undef, $list, $count) = @_;
    my $description = main::new();
    must(get_member((arguments($list, $count))[0], 'description', $description));
    print 'told: ', value($description), "\n";
    free($description);
    return OK;
});
my $error_block = place($tell);
must(set_error_block($error_block));
($status) = call_method($connection, 'nosuch');
print "with one: status $status\n";
must(set_error_block(undef));
free($_) for $error_block, $array, $block, $connection;
