/* The Orvane database library: flat-file tables described by a schema.
 *
 * Conventions
 *   - A database, table, field and record are named by four indexes in one Dbptr, passed by value.
 *     A Dbptr owns nothing; it goes stale when its database is closed or its view is freed, and every
 *     call with a stale one fails.
 *   - All text is UTF-8 and ends with a zero byte; text from files is handed out as it stands.
 *   - A failure is a negative code, or a Dbptr with negative indexes, and a line in the error log of
 *     <orvane/util.h> that says what, where and why. Nothing is printed, nothing throws.
 *   - Who owns an answer is said per call; "borrowed" text belongs to the library.
 *
 * Caveats
 *   - One thread at a time. A call may use several threads inside; it returns when they are done.
 *   - Opening reads the descriptor and the schema, and no table. A table is looked at when it is
 *     first asked about; a table file of a wrong form is refused alone: it answers as a table without
 *     records, and each such call leaves the reason in the error log.
 *   - Table files may grow, be replaced or be cut short by other programs at any time. Growth and
 *     replacement are noticed when records are counted, and within a tenth of a second otherwise; a
 *     record that is gone is an error.
 *   - A view stands for the records that its rows had when it was made. Where a table was cut short or
 *     replaced by another program since, rows of records that are gone fail; free the view and make it
 *     again.
 *   - A child made by fork must not use databases that its parent opened.
 */
#ifndef ORVANE_DB_H
#define ORVANE_DB_H

#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

#include <orvane/db_export.h>
#include <orvane/util.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct Dbptr {
    int64_t database;
    int64_t table;
    int64_t field;
    int64_t record;
} Dbptr;

/* Special index values, and the code of the null-value query. */
enum {
    dbINVALID = -102, /* points to nothing */
    dbALL = -501,     /* all tables, fields or records */
    dbSCRATCH = -504, /* the scratch record of a table, which a view of that table alone shows too */
    dbNULL = -505     /* the null record of a table; as a query code: a field's null value */
};

/* Codes of dbquery and the type of the answer. Text is borrowed and lives until the database is closed,
 * the view is freed or the same question is asked again. A list (Tbl *) is the caller's, its texts
 * too: freetbl(list, free). The array is the caller's: freearr(array, free). */
enum {
    dbTABLE_COUNT = -303,          /* int64_t: tables and views of the database */
    dbFIELD_COUNT = -304,          /* int64_t: fields of the table */
    dbRECORD_COUNT = -305,         /* int64_t: whole records of the table; rows of the view */
    dbSCHEMA_DESCRIPTION = -307,   /* const char * */
    dbDATABASE_DESCRIPTION = -308, /* const char * */
    dbTABLE_DESCRIPTION = -309,    /* const char * */
    dbFIELD_DESCRIPTION = -310,    /* const char * */
    dbSCHEMA_DETAIL = -312,        /* const char * */
    dbDATABASE_DETAIL = -313,      /* const char * */
    dbTABLE_DETAIL = -314,         /* const char * */
    dbFIELD_DETAIL = -315,         /* const char * */
    dbSCHEMA_NAME = -317,          /* const char * */
    dbDATABASE_NAME = -318,        /* const char *: the path given to open, without a table */
    dbTABLE_NAME = -319,           /* const char * */
    dbFIELD_NAME = -320,           /* const char * */
    dbTABLE_PRESENT = -321,        /* int64_t: 1 when the table has a file (a view: always) */
    dbTABLE_SIZE = -323,           /* int64_t: bytes; of a view, rows times record size */
    dbFIELD_SIZE = -324,           /* int64_t: bytes */
    dbFIELD_UNITS = -327,          /* const char * */
    dbFIELD_TYPE = -328,           /* int64_t: one of the field types below */
    dbTABLE_FILENAME = -329,       /* const char *: of a table without a file, where one would be made */
    dbDBPATH = -330,               /* const char *: the folders, joined by colons */
    dbTABLE_DIRNAME = -331,        /* const char * */
    dbPRIMARY_KEY = -332,          /* Tbl * of char *; a range key as "ondate::offdate" */
    dbALTERNATE_KEY = -333,        /* Tbl * of char * */
    dbFOREIGN_KEYS = -334,         /* Tbl * of char * */
    dbUNIQUE_ID_NAME = -336,       /* const char *: the id field that the table defines, or empty */
    dbFIELD_RANGE = -341,          /* const char * */
    dbRECORD_SIZE = -343,          /* int64_t: bytes, the line feed included */
    dbFIELD_FORMAT = -344,         /* const char *: a C conversion */
    dbFIELD_INDEX = -345,          /* int64_t: the field's first byte in the record */
    dbTABLE_FIELDS = -347,         /* Tbl * of char *: field names, in order */
    dbVIEW_TABLES = -349,          /* Tbl * of char *: a view's member tables; of a base table, itself */
    dbLINK_FIELDS = -350,          /* Arr * of char *: id field to the table that defines it */
    dbTABLE_IS_WRITABLE = -352,    /* int64_t: 1 when records can be changed or added */
    dbTABLE_IS_VIEW = -353,        /* int64_t */
    dbFIELD_BASE_TABLE = -354,     /* const char * */
    dbTIMEDATE_NAME = -356,        /* const char *: the schema's timestamp field, or empty */
    dbDATABASE_FILENAME = -357,    /* const char *: the path of the descriptor */
    dbSCHEMA_TABLES = -358,        /* Tbl * of char *: base tables in schema order, then views */
    dbIDSERVER = -361,             /* const char * */
    dbLOCKS = -362,                /* const char *: "local" or "none" */
    dbTABLE_CREATION = -368,       /* const char *: one line per operation, oldest first */
    dbTABLE_NUMBERING = -369,      /* int64_t: another one when record numbers stand for other records */
    dbTABLE_VERSION = -370         /* int64_t: another one when another program may have changed records */
};

/* Field types, as answered to dbFIELD_TYPE. */
enum {
    dbBOOLEAN = 1, /* 0 or 1, as an integer */
    dbINTEGER = 2,
    dbREAL = 3,
    dbTIME = 4,    /* epoch seconds */
    dbYEARDAY = 5, /* yyyyddd, as an integer */
    dbSTRING = 6,
    dbDBPTR = 142
};

/* Codes of failures. Every call that fails may return any of them. */
enum {
    dbERROR_STALE = -1,     /* the Dbptr names nothing that is open */
    dbERROR_ARGUMENT = -2,  /* an argument is wrong, or the Dbptr is of the wrong level */
    dbERROR_NOT_FOUND = -3, /* no such file, table, field or record */
    dbERROR_FORMAT = -4,    /* a file is not of the form it should have */
    dbERROR_IO = -5,        /* the system refused to read or write */
    dbERROR_PERMISSION = -6,
    dbERROR_VALUE = -7, /* a text is not a value of its field's type */
    dbERROR_MEMORY = -8,
    dbERROR_CANCELLED = -9 /* the progress hook said to stop */
};

/* The pointer whose four indexes are dbINVALID. */
ORVANE_DB_EXPORT Dbptr dbinvalid(void);

/* Opens the database at a path. `permissions` is "r" to read or "r+" to read and write. The path is
 * a descriptor; or a path with no descriptor but with table files of the default schema beside it
 * ($ORVANE_SCHEMA, else css3.0); or either of them followed by "." and a table's name.
 * Returns 0 and a pointer whose table (unless named), field and record are dbALL, or a negative
 * code with *db invalid. */
ORVANE_DB_EXPORT int dbopen_database(const char *path, const char *permissions, Dbptr *db);

/* Closes the database that `db` points into; its pointers, views and borrowed texts end. */
ORVANE_DB_EXPORT int OVdbclose(Dbptr db);

/* Looks names up. A null or empty name keeps that index of `db`. `database` is the name of an open one
 * (dbDATABASE_NAME). `table` may be a base table or a view; `field` may be "table.field", which also names
 * the table where `db` points to none; `record` may be the number, in decimal, of a record that is there.
 * "dbALL" stands for itself; as a record so do "dbSCRATCH" and "dbNULL". A new database or table drops what
 * is below it and not named to dbALL. An unknown name gives the invalid pointer. */
ORVANE_DB_EXPORT Dbptr dblookup(Dbptr db, const char *database, const char *table, const char *field,
                                const char *record);

/* Answers the question `code` about what `db` points to into *answer, whose type is told beside the
 * codes. Returns 0, or a negative code with *answer 0 or null. */
ORVANE_DB_EXPORT int dbquery(Dbptr db, int code, void *answer);

/* The text of the field, or of the whole record without its line feed, that `db` points to, as it
 * stands in the file and zero-terminated. Returns its length in bytes, or a negative code. When the length
 * is not below `capacity` nothing is written: call again with room for length + 1.
 * With a null buffer the whole record of a base table, or of a view of one alone, is copied to the table's
 * scratch record. */
ORVANE_DB_EXPORT int64_t dbget(Dbptr db, char *buffer, size_t capacity);

/* A value by its field's type. */
typedef struct DbValue {
    int64_t type;    /* dbBOOLEAN … dbDBPTR */
    int64_t integer; /* dbBOOLEAN, dbINTEGER, dbYEARDAY */
    double real;     /* dbREAL, dbTIME */
    char *text;      /* dbSTRING: the field without blanks at its end; the caller's, free() */
    Dbptr dbptr;     /* dbDBPTR */
} DbValue;

/* The value of `field` (null: the field that `db` points to) of the record that `db` points to.
 * Returns 0, or a negative code with *value zeroed. */
ORVANE_DB_EXPORT int dbgetv(Dbptr db, const char *field, DbValue *value);

/* The records that a pointer stands for, as [*first, *end): the rows of a bundle, one record, or all
 * records of a table. Returns 0 or a negative code. */
ORVANE_DB_EXPORT int dbget_range(Dbptr db, int64_t *first, int64_t *end);

/* The tables that `db`'s table can be joined to (Tbl * of char *, the caller's: freetbl(list, free)), in
 * schema order, in *tables. Returns 0 or a negative code. */
ORVANE_DB_EXPORT int dbfind_join_tables(Dbptr db, Tbl **tables);

/* The keys by which `left` joins `right`: two lists of equal length (the caller's: freetbl(list, free)), a
 * range key as "time::endtime". Returns 0, or a negative code with both null when there are none. */
ORVANE_DB_EXPORT int dbfind_join_keys(Dbptr left, Dbptr right, Tbl **left_keys, Tbl **right_keys);

/* ---- Views -------------------------------------------------------------------------------------
 *
 * A view is rows of record numbers of its member tables; its cells are theirs. The calls below make one of
 * the table or view that their pointer points to, put it behind all tables and views so far and answer a
 * pointer to it (field and record dbALL), or the invalid pointer with the reason in the error log and no view
 * left behind.
 *
 * `view` names the new view: no name that a table or view of the database has, no slash. Null or empty stands
 * for a telling one, "arrival_sort1".
 *
 * Fields are named by their names, or as "table.field" where several members have one of that name. Lists
 * stay the caller's. Numbers compare as numbers, text by bytes without blanks at its end, a null as the value
 * that it is stored as; a field whose text is no value of its type counts as null, of which a notice tells.
 *
 * The creation text (dbTABLE_CREATION) has a line per operation: "dbopen TABLE" stands for a table; every
 * other line makes one view of what the line before has made, or of the two last ones (dbjoin, dbnojoin,
 * dbtheta). */

/* The rows for which the expression is true, in order. The language is described in docs/expressions.md. */
ORVANE_DB_EXPORT Dbptr dbsubset(Dbptr db, const char *expression, const char *view);

/* Flags of dbsort, to be added. */
enum {
    dbSORT_REVERSE = 1, /* from high to low; equal rows stay in their order */
    dbSORT_UNIQUE = 2   /* of equal rows only the first of the input */
};

/* The rows in the order of the fields (Tbl of char *), the first of which weighs most. Equal rows stay in
 * their order. */
ORVANE_DB_EXPORT Dbptr dbsort(Dbptr db, const Tbl *fields, int flags, const char *view);

/* Bundles of the rows that are equal in the fields, in the fields' order. The view has these fields and
 * `bundle`, a dbptr for which dbget_range answers the rows: in the view that the bundle points to, which is
 * the one that was grouped if its rows were in order, else one that no list shows. It lives as long as the
 * grouped view. `type` is 1. */
ORVANE_DB_EXPORT Dbptr dbgroup(Dbptr db, const Tbl *fields, const char *view, int type);

/* The rows of the bundles, in order. */
ORVANE_DB_EXPORT Dbptr dbungroup(Dbptr db, const char *view);

/* The rows of `left`, in order, each beside its matches in `right` in record order, joined on keys: as many
 * of one side as of the other (Tbl of char *; where one list is null, both sides have the keys by one name;
 * where both are, the keys of dbfind_join_keys), and `both_keys`, which both sides have by one name (null:
 * none). A key is a field, or a range "ondate::offdate": a value lies within it, another range has a value in
 * common with it. Both ends of a range belong to it, an end that is null is open, a yearday is the whole day.
 * A null never joins. With `outer` 1 left rows without a match stay, beside a null record. A table can be a
 * member of a view only once. */
ORVANE_DB_EXPORT Dbptr dbjoin(Dbptr left, Dbptr right, const Tbl *left_keys, const Tbl *right_keys, int outer,
                              const Tbl *both_keys, const char *view);

/* The rows of `left` without a match in `right`, in order. Keys as for dbjoin. */
ORVANE_DB_EXPORT Dbptr dbnojoin(Dbptr left, Dbptr right, const Tbl *left_keys, const Tbl *right_keys,
                                const char *view);

/* The pairs of rows for which the expression is true, in the order of dbjoin. Names are those of `left`
 * first. Parts joined by && that compare a value of one side with one of the other are looked up; others are
 * tried pair by pair. */
ORVANE_DB_EXPORT Dbptr dbtheta(Dbptr left, Dbptr right, const char *expression, const char *view);

/* The view without one of its member tables; of rows that are equal then, the first. */
ORVANE_DB_EXPORT Dbptr dbsever(Dbptr db, const char *table, const char *view);

/* The distinct records of one member table, in record order. */
ORVANE_DB_EXPORT Dbptr dbseparate(Dbptr db, const char *table);

/* Lets go of a view: its pointers go stale. What other views need of it stays with them. A base table is no
 * view. */
ORVANE_DB_EXPORT int dbfree(Dbptr db);

/* ---- Rows as text ------------------------------------------------------------------------------- */

/* Writes a line of text for each of the records that `db` stands for (dbget_range) to a stream, and passes it
 * on (fflush); the stream stays the caller's. `fields` (Tbl of char *; null: all) are written in their order,
 * with the separator between them: flag 0   in full width, as they stand in the file flag 1   without blanks
 * at their ends, and quoted as RFC 4180 has it where a field holds the separator, a quote or an end of line,
 * or is empty and alone in its line; lines end with a line feed The fields of dbTABLE_FIELDS, unchanged, are
 * all fields, also where several members of a view have one of that name. With flag 0, all fields and the
 * separator " " a base table is copied byte for byte. Returns 0 or a negative code: dbERROR_ARGUMENT also
 * where there is no stream, dbERROR_IO where it can't be written, with the system's reason. Lines may have
 * been written before a failure, also one that the progress hook asked for. */
ORVANE_DB_EXPORT int dbselect(Dbptr db, const Tbl *fields, FILE *stream, const char *separator, int flag);

/* Writes the line of the fields' names in the same form: with flag 0 a name stands in the width of its field,
 * on the side of its values; a longer one is not cut. Where a view has several fields of one name the further
 * ones are called "table.field". */
ORVANE_DB_EXPORT int dbselect_hdr(Dbptr db, const Tbl *fields, FILE *stream, const char *separator, int flag);

/* The rows that `db` stands for (dbrow_range) will be asked for by dbget or dbgetv: of a view, whose rows may lie
 * anywhere in their files, it costs less to read them together, some hundreds at a time. Nothing else
 * changes: rows that can't be read are told where they are asked for. Returns 0, or a negative code where `db`
 * is no pointer to numbered rows. */
ORVANE_DB_EXPORT int dbread_ahead(Dbptr db);

/* A pointer that stands for the records [first, end) of the table that `db` points to: for dbselect and
 * dbget_range, which find out whether they are there. The invalid pointer where that is no range. */
ORVANE_DB_EXPORT Dbptr dbrow_range(Dbptr db, int64_t first, int64_t end);

/* ---- Saving -------------------------------------------------------------------------------------
 *
 * A saved view is a text of the view's record numbers (docs/formats/saved-view.md). A database shows those
 * that lie beside its descriptor, as files QUAKES.NAME, behind its tables from when it is opened; their rows
 * are read when they are first asked for. Where a member table has changed since the view was saved a notice
 * says so, and rows that stand for records that are gone are left out. A damaged one is refused: a notice, or
 * as with a table of a wrong form the error log, says where it is wrong.
 *
 * The calls return 0 or a negative code; the pointer's field and record count for nothing. They call the
 * progress hook. */

/* Writes the table or view to a stream, which stays the caller's, as a saved view; a base table as the view
 * of all its records. A null stream is an error. */
ORVANE_DB_EXPORT int dbwrite_view(Dbptr db, FILE *stream);

/* Saves the view beside its database's descriptor, under its name and in place of the view that was saved
 * under that before; a base table as NAME_view1. No other file is replaced. It needs no more than the right
 * to write to the folder. When it fails what was there stays as it was. */
ORVANE_DB_EXPORT int dbsave_view(Dbptr db);

/* Reads a saved view from a stream, up to its end, and makes it a view of `database`; where that is the
 * invalid pointer, of the database that it was saved from, which is opened to read and is the caller's to
 * close. `name` is that of the view; null or empty stands for the one that it was saved under, or one like
 * it. Answers as dbsubset does. */
ORVANE_DB_EXPORT Dbptr dbread_view(Dbptr database, FILE *stream, const char *name);

/* Writes the records that the table's or view's rows stand for, of each member table once and in their order,
 * as a new database: a descriptor at the path, and table files. Where the schema would not be found from
 * there it is copied beside it. A path at which there is a descriptor or a table file is refused. `flag` is
 * 0. When it fails or is cancelled nothing is left. */
ORVANE_DB_EXPORT int dbunjoin(Dbptr db, const char *path, int flag);

/* ---- Progress ----------------------------------------------------------------------------------- */

/* Told how far an operation is, from 0 to 1, on the thread that called it and at most every 100 ms. An answer
 * other than 0 stops the operation, which then leaves nothing behind and "cancelled" in the error log. The
 * hook may read records and ask questions; operations and closing are refused while it runs. */
typedef int (*dbprogress_hook)(double fraction, void *data);

/* Sets the hook of the process; null for none. */
ORVANE_DB_EXPORT void dbset_progress_hook(dbprogress_hook hook, void *data);

/* For hooks: the name of the call that is running, "dbsort"; null outside of hooks. */
ORVANE_DB_EXPORT const char *dbprogress_operation(void);

/* For hooks: what the call that is running waits for, as a sentence ("/data/quakes.origin is locked by ovdb
 * (process 4711); waiting until it is free"); null while it waits for nothing. */
ORVANE_DB_EXPORT const char *dbprogress_waiting(void);

/* Tells the hook, at most every 100 ms, how far something is that reads many records by itself, such as
 * writing a spreadsheet of them; `operation` names it for dbprogress_operation. Returns 0, or
 * dbERROR_CANCELLED when the hook says to stop, with nothing in the error log. */
ORVANE_DB_EXPORT int dbreport_progress(const char *operation, double fraction);

/* ---- Expressions --------------------------------------------------------------------------------
 *
 * For those who help people write them. The language is described in docs/expressions.md. */

typedef struct DbExpressionError {
    char *reason;  /* one line; the caller's, free() */
    size_t offset; /* the bytes of the expression that it is about; of length 0 at its end */
    size_t length;
} DbExpressionError;

/* Whether dbsubset of `db` would take the expression, or, where `other` is not the invalid pointer, dbtheta
 * of both. Nothing is run. Returns 0, or a negative code with *error filled and nothing in the error log.
 * Where the reason is not the expression (a stale pointer) the error log has it, and `reason` is null. */
ORVANE_DB_EXPORT int dbexpr_check(Dbptr db, Dbptr other, const char *expression, DbExpressionError *error);

/* A function of the language, as text that the library keeps. */
typedef struct DbFunction {
    const char *name;
    const char *signature; /* with the result: "abs(x: real) → real" */
    const char *group;     /* "Mathematics" */
    const char *help;      /* one or several sentences */
} DbFunction;

/* The functions by index, from 0 on and without gaps; those of a group, and those of one name that take
 * different arguments, stand together. Returns dbERROR_NOT_FOUND behind the last, with nothing in the error
 * log. */
ORVANE_DB_EXPORT int dbexpr_function(int64_t index, DbFunction *function);

/* ---- Finding ------------------------------------------------------------------------------------ */

/* The number of the next record after that which `db` points to, backwards the next before it, for which the
 * expression is true; from dbALL the first, backwards the last. `hook`, if not null, takes the place of the
 * process's progress hook (with null data). Returns dbERROR_NOT_FOUND with nothing in the error log when
 * there is none, or another negative code. */
ORVANE_DB_EXPORT int64_t dbfind(Dbptr db, const char *expression, int backwards, dbprogress_hook hook);

/* For each of `count` rows of `from`, the row of `to` that has the same records, in places[]; -1 where there
 * is none or the row is no row of `from`. The two are tables or views of the same member tables: a view and
 * what it was made of by dbsubset or dbsort, say. Returns 0, or a negative code with `places` as it was. */
ORVANE_DB_EXPORT int dbfind_rows(Dbptr from, Dbptr to, const int64_t *rows, size_t count, int64_t *places);

/* ---- Changing ------------------------------------------------------------------------------------
 *
 * Of a database opened with "r+". A change is there whole when its call returns, for other programs too, and
 * survives the end of this one; with `durability: disk` in the descriptor that of the machine. A call that
 * fails leaves the table as it was. Writers lock the table's file (unless the descriptor says `locks: none`):
 * a call waits for another one's lock, asks the process's progress hook meanwhile (dbprogress_waiting) and is
 * given up with dbERROR_CANCELLED. Details are in docs/editing.md.
 *
 * A record is known by its number. When another program crunched or replaced the table since this one last
 * read of it, a change by number fails with dbERROR_STALE: read the table again.
 *
 * Errors beside the general ones: dbERROR_VALUE for a value that does not fit, with what was expected;
 * dbERROR_PERMISSION for what was opened to be read and for files and folders that can't be written. */

/* Puts a value into `field` (null: the field that `db` points to) of the record, of the scratch record, or of
 * the base record of the view's row that `db` points to. It is printed by the field's format and checked
 * against its type, width and range (a null passes the range); what does not fit is refused, never cut. The
 * value need not be of the field's type (value->type says which member holds it): a whole number fits a real
 * field, a text any that it can be read as, a number a text. Text is UTF-8 without control characters. The
 * record's timestamp is set to the present time, whatever is put there. Returns 0 or a negative code. */
ORVANE_DB_EXPORT int dbputv(Dbptr db, const char *field, const DbValue *value);

/* Whether dbputv would take the value for the field of the record now: 0, or the negative code with the
 * reason in the error log. Nothing is changed or locked, so that another program may still come in between.
 */
ORVANE_DB_EXPORT int dbcheckv(Dbptr db, const char *field, const DbValue *value);

/* Appends a record to a base table and answers its number, or a negative code. `record` is its text, without
 * a line feed, checked field by field and otherwise kept as it stands; null: the table's scratch record,
 * which stays as it is. Keys are not looked at. A record of nothing but nulls is refused; the timestamp,
 * which is set to the present time, does not count there. A table without a file gets one, in the first
 * folder of the dbpath. */
ORVANE_DB_EXPORT int64_t dbadd(Dbptr db, const char *record);

/* As dbadd, but when a record has the same primary key answers its number, the lowest where there are
 * several, and adds nothing. Keys are the same when their values are, both ends of a range included. A table
 * without a primary key has no same ones. */
ORVANE_DB_EXPORT int64_t dbaddchk(Dbptr db, const char *record);

/* Makes the record of a base table one of nothing but nulls; flags a row of a view, which stays as it is
 * until the view is crunched. Returns 0 or a negative code. */
ORVANE_DB_EXPORT int dbmark(Dbptr db);

/* Removes the records of a base table that have nothing but nulls, or the flagged rows of a view. The views
 * over the table follow: rows whose records are gone go, bundles without rows too. A table's file is replaced
 * by a new one. Returns 0 or a negative code. */
ORVANE_DB_EXPORT int dbcrunch(Dbptr db);

/* For each of `count` record numbers that the table or view had at the numbering `numbering`
 * (dbTABLE_NUMBERING), the number that the record has now, in places[] (which may be `numbers`); -1 where it
 * is gone. Known of the last time that this program crunched: dbERROR_STALE where another program replaced
 * the table, or it was crunched more than once since. Returns 0, or a negative code with `places` as it was
 * and, of dbERROR_STALE, nothing in the error log. */
ORVANE_DB_EXPORT int dbmoved_records(Dbptr db, int64_t numbering, const int64_t *numbers, size_t count,
                                     int64_t *places);

/* Rows [first, end) of a table or view. */
typedef struct DbRows {
    int64_t first;
    int64_t end;
} DbRows;

/* Puts one value into a field of many rows, as dbputv does into one, in less than a microsecond for each: the
 * table is locked for a tenth of a second at a time, and changed many records at once. A record that several
 * rows of a view show is changed once. Calls the progress hook. A failure, which may be dbERROR_CANCELLED,
 * leaves what was changed before it: *changed (may be null) has the number of records that were. Every record
 * is changed whole or not at all. */
ORVANE_DB_EXPORT int dbputv_rows(Dbptr db, const char *field, const DbValue *value, const DbRows *rows,
                                 size_t count, int64_t *changed);

/* Marks many rows, as dbmark does one; otherwise as dbputv_rows. */
ORVANE_DB_EXPORT int dbmark_rows(Dbptr db, const DbRows *rows, size_t count, int64_t *changed);

/* A new number for the id field `name` ("orid"), greater than any in use in the table that defines it and,
 * where the schema has the table lastid, than any given out before, also by other programs; else the caller
 * has to use it before he or another asks again. Returns the number, or a negative code. */
ORVANE_DB_EXPORT int64_t dbnextid(Dbptr db, const char *name);

/* ---- Taking changes back --------------------------------------------------------------------------
 *
 * For those who keep what was there before a change. The library keeps nothing itself. */

enum {
    dbCHANGED_VALUES = 1,  /* dbputv and dbputv_rows */
    dbCHANGED_MARKS = 2,   /* dbmark and dbmark_rows, of base tables */
    dbCHANGED_ADDED = 3,   /* dbadd and dbaddchk */
    dbCHANGED_NUMBERS = 4, /* dbcrunch: what was told of the table before can't be taken back any more */
};

/* A change of records of one base table. All pointers are borrowed for as long as the call lasts. */
typedef struct DbChange {
    int kind;
    Dbptr place;            /* the base table, and the field whose values were put (else dbALL) */
    int64_t numbering;      /* for which the record numbers hold: dbTABLE_NUMBERING */
    uint64_t step;          /* the same for changes that were one step */
    int whole_records;      /* 1: the texts are those of whole records; 0: of the field */
    size_t count;           /* records */
    const int64_t *records; /* ascending */
    size_t length;          /* bytes of each text */
    const char *before;     /* a text for each record, one behind the other */
    const char *after;      /* one text, which all of them have now */
} DbChange;

/* Told of every change of a file's records by this process, once it is there, and of a change of many records
 * in several calls with one step. The table is locked meanwhile: the hook must not change or read records, only
 * ask for names. Values that were put and are those of before are not told, nor are timestamps, the scratch
 * record, flagged rows of views, and what dbnextid, dbtake_back and dbdo_again change. */
typedef void (*dbchange_hook)(const DbChange *change, void *data);

/* Sets the hook of the process; null for none: then a change costs nothing more. */
ORVANE_DB_EXPORT void dbset_change_hook(dbchange_hook hook, void *data);

/* Changes between the two are one step. They may be nested. */
ORVANE_DB_EXPORT void dbbegin_step(void);
ORVANE_DB_EXPORT void dbend_step(void);

/* Puts back what was there before a change that the hook was told (dbtake_back), or puts it there again
 * (dbdo_again), in every record that still holds what the change left, timestamps aside; these are set to the
 * present time. A record that was added becomes one of nulls, as if it were marked. Records that hold
 * something else by now are left alone, and *left (may be null) counts them. Calls the progress hook. Returns
 * 0 or a negative code: dbERROR_STALE when the numbers don't hold any more, because the table was crunched or
 * replaced. What was done before a failure stays, and may be called for again. */
ORVANE_DB_EXPORT int dbtake_back(const DbChange *change, int64_t *left);
ORVANE_DB_EXPORT int dbdo_again(const DbChange *change, int64_t *left);

#ifdef __cplusplus
}
#endif

#endif /* ORVANE_DB_H */
