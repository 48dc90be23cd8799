// SPDX-License-Identifier: MIT
/* The attribute catalogue of libqdcli.so: every attribute ID the command
 * handlers print through the shell's typed printer, request, or read from
 * the daemon's switch-wide attribute stream.
 *
 * A host printer uses it to render structured output: the stable snake_case
 * name of each value, its type and width (a 32-bit counter wraps at 2^32),
 * what it is (a counter that only grows, a gauge, an identifier, a label of
 * a fixed lower-case vocabulary) and where it belongs: the table of the
 * report it is a column of, and that table's index column. Tables nest: the
 * rows of a table with a parent belong to the parent's current row.
 *
 * The functions are plain lookups in constant data: no state, no
 * allocation, safe from any thread. Usable from C and C++. */
#ifndef QDCLI_ATTRIBUTES_H
#define QDCLI_ATTRIBUTES_H

#include <stddef.h>
#include <stdint.h>

/* Exported from libqdcli.so; a program that compiles the catalogue into
 * itself defines QDCLI_ATTR_LOCAL to keep the functions its own. */
#if defined(QDCLI_ATTR_LOCAL) && defined(__GNUC__)
#define QDCLI_ATTR_API __attribute__((visibility("hidden")))
#elif defined(__GNUC__)
#define QDCLI_ATTR_API __attribute__((visibility("default")))
#else
#define QDCLI_ATTR_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

enum qdcli_attr_type {
    QDCLI_ATTR_U8,        /* one byte */
    QDCLI_ATTR_U16,       /* 16-bit unsigned */
    QDCLI_ATTR_U32,       /* 32-bit unsigned */
    QDCLI_ATTR_U64,       /* 64-bit unsigned */
    QDCLI_ATTR_I32,       /* signed 32-bit; -1 where a value does not apply */
    QDCLI_ATTR_IF_INDEX,  /* 32-bit interface index */
    QDCLI_ATTR_TEXT,      /* NUL-terminated text (two of them under the unsigned type byte) */
    QDCLI_ATTR_FLAGS8,    /* eight bytes tested as one flag (any byte non-zero) */
    QDCLI_ATTR_MARKER     /* no value: the attribute itself is the instruction */
};

enum qdcli_attr_role {
    QDCLI_ROLE_COUNTER,    /* only grows (until cleared or wrapped at width_bits) */
    QDCLI_ROLE_GAUGE,      /* a size, threshold, setting or count that may go down */
    QDCLI_ROLE_IDENTIFIER, /* names a row or an object (qos-group, queue, interface...) */
    QDCLI_ROLE_LABEL,      /* a state or kind from a fixed vocabulary */
    QDCLI_ROLE_NONE        /* markers */
};

/* What an attribute is to a metrics exporter (qdcli_attr_info.metric_type):
 * a sample of its own, a label of the samples of its row, or nothing. */
enum qdcli_metric_type {
    QDCLI_METRIC_NONE,    /* not exported; with a label name, it identifies its row (and the rows below) */
    QDCLI_METRIC_COUNTER, /* monotonic: samples NAME_total; a narrow one is carried on across its wraps */
    QDCLI_METRIC_GAUGE,   /* may go down: sizes, thresholds, settings, counts that saturate */
    QDCLI_METRIC_INFO     /* configuration: label `label` of the row's series NAME_info (value 1) */
};

/* Flags of an attribute (qdcli_attr_info.flags). */
#define QDCLI_ATTR_FLAG_ROW_START 0x1u /* a value of it starts a new row of its table */
#define QDCLI_ATTR_FLAG_LIST 0x2u      /* printed once per element: its value is a list */
#define QDCLI_ATTR_FLAG_STATE 0x4u     /* text of a fixed vocabulary: compare trimmed, lower case */
#define QDCLI_ATTR_FLAG_OPTIONAL 0x8u  /* a row of its table may lack it (every other column is always there) */

struct qdcli_attr_info {
    uint32_t id;
    const char *name;                /* stable snake_case, unique across the catalogue */
    enum qdcli_attr_type type;
    unsigned width_bits;             /* 32 for a 32-bit counter that wraps; 0 for texts and markers */
    enum qdcli_attr_role role;
    const char *unit;                /* "packets", "bytes", "percent", or NULL */
    const char *table;               /* table it is a column of, NULL for a value of the report itself */
    const char *row_key;             /* that table's index column name (NULL when none) */
    const char *help;                /* one-line description */
    const char *parent_table;        /* table whose current row holds this table's rows, or NULL */
    unsigned flags;                  /* QDCLI_ATTR_FLAG_... */
    /* How a metrics exporter shows it: */
    const char *metric;              /* family name without the "qdcli_" prefix and "_total"; for INFO the
                                        family of the row's _info series; NULL when not exported */
    enum qdcli_metric_type metric_type;
    const char *metric_unit;         /* OpenMetrics UNIT ("bytes", "ratio", "seconds"), the name's last word; or NULL */
    unsigned metric_divisor;         /* the value is divided by it on export (100: percent to a ratio); 0 or 1: as it is */
    const char *label;               /* label name: of the row's identity (type NONE) or in the _info series (INFO) */
    const char *metric_labels;       /* constant labels of its samples, "direction=n2h" or "channel=0", or NULL */
    const char *metric_help;         /* HELP of a family several attributes share (NULL: `help`) */
};

/* The whole catalogue; *count (when not NULL) gets the number of entries. */
QDCLI_ATTR_API const struct qdcli_attr_info *qdcli_attr_catalogue(size_t *count);
/* The entry of an attribute ID, or NULL. */
QDCLI_ATTR_API const struct qdcli_attr_info *qdcli_attr_find(uint32_t id);
/* The entry of a name, or NULL (also for a NULL name). */
QDCLI_ATTR_API const struct qdcli_attr_info *qdcli_attr_find_name(const char *name);
/* The words a state attribute (QDCLI_ATTR_FLAG_STATE) takes, trimmed and in
   lower case, as a NULL-terminated list; NULL for any other attribute. */
QDCLI_ATTR_API const char *const *qdcli_attr_states(uint32_t id);

#ifdef __cplusplus
}
#endif

#endif /* QDCLI_ATTRIBUTES_H */
