// SPDX-License-Identifier: MIT
/**
 * @file qdcli/observer.h
 * @brief Typed events beside the printed text: what a handler is working on,
 * every value it prints, where its rows begin and end, and every failure or
 * refusal it tells.
 *
 * The handlers print their reports exactly as they always do, through the
 * shell's printer or to standard output. A host that also wants the report's
 * structure (a document, metrics, a monitoring feed) provides the optional
 * operation qdcli_observer_get(); the library then tells the returned
 * observer, as it goes, what it prints. A host that does not provide the
 * operation gets no events: the symbol is a weak reference of libqdcli.so,
 * and with it absent (or returning NULL) the library prints and costs as if
 * the observer did not exist.
 *
 * The library keeps no state of its own: it asks qdcli_observer_get() when a
 * handler starts an event and uses the answer for that event only.
 *
 * Threads and lifetimes: every callback runs synchronously on the thread that
 * called the handler, inside the handler call, in the order the report is
 * printed (a value event comes right before the printer call or the write to
 * standard output that prints it). Every pointer handed to a callback (the
 * subject, its name, a table name, a value, a failure and its message) is
 * valid only until the callback returns; a host copies what it keeps. A
 * callback must not call a handler, and must not throw or longjmp.
 *
 * Values carry a catalogue attribute ID (qdcli/attributes.h) and the value's
 * bytes in host order, with the lengths of the printer's typed arguments:
 * 4 for 32-bit numbers, 8 for 64-bit counters, the text length + 1 (the NUL
 * included) for texts. Some values are told that the printed text does not
 * carry as a typed argument (the control queues' names, the kind of a
 * statistics row, the values of reports printed to standard output); their
 * IDs are in the catalogue as well.
 */
#ifndef QDCLI_OBSERVER_H
#define QDCLI_OBSERVER_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** The version of struct qdcli_observer this library reads. */
#define QDCLI_OBSERVER_VERSION 1u

/** What a subject is. */
enum qdcli_subject_kind {
    QDCLI_SUBJECT_INTERFACE = 1, /**< an interface: if_index, and if_name where the report has it */
    QDCLI_SUBJECT_EXTENDER = 2,  /**< a remote port extender (VAQ): vaq */
    QDCLI_SUBJECT_ASIC = 3       /**< one ASIC of an extender: vaq and asic */
};

/** Which members of a subject are set. */
enum qdcli_subject_field {
    QDCLI_SUBJECT_HAS_IF_INDEX = 1u << 0,
    QDCLI_SUBJECT_HAS_IF_NAME = 1u << 1,
    QDCLI_SUBJECT_HAS_VAQ = 1u << 2,
    QDCLI_SUBJECT_HAS_ASIC = 1u << 3
};

/** What a handler is working on. */
struct qdcli_subject {
    enum qdcli_subject_kind kind;
    uint32_t fields;     /**< qdcli_subject_field bits */
    uint32_t if_index;
    uint32_t vaq;
    uint32_t asic;
    const char *if_name; /**< NULL unless QDCLI_SUBJECT_HAS_IF_NAME */
};

/** What went wrong, or why the handler refused. */
enum qdcli_failure_kind {
    QDCLI_FAILURE_UNSUPPORTED = 1, /**< the daemon or an agent does not support this interface */
    QDCLI_FAILURE_NOT_SUPPORTED,   /**< the command is not supported here (platform, extender, ASIC) */
    QDCLI_FAILURE_NOT_ALLOWED,     /**< refused: the command is not allowed on this interface */
    QDCLI_FAILURE_INVALID,         /**< the command's input or interface is not valid */
    QDCLI_FAILURE_SEND,            /**< sending the request failed */
    QDCLI_FAILURE_RECEIVE,         /**< receiving the reply failed */
    QDCLI_FAILURE_EMPTY,           /**< the reply carried no payload */
    QDCLI_FAILURE_TRUNCATED,       /**< the reply is shorter than the report reads */
    QDCLI_FAILURE_DAMAGED,         /**< the reply's counts or indexes do not fit its layout */
    QDCLI_FAILURE_PLATFORM,        /**< a platform service failed (log service, shared memory, lookup) */
    QDCLI_FAILURE_MEMORY,          /**< the handler could not allocate what it needed */
    QDCLI_FAILURE_INTERNAL         /**< the handler stopped on an internal error */
};

/** One failure or refusal, as the handler told it. */
struct qdcli_failure {
    enum qdcli_failure_kind kind;
    const struct qdcli_subject *subject; /**< NULL: the subject begun last and not yet ended, if any */
    const char *message; /**< the exact text printed (its newlines included); NULL when nothing was printed */
    int32_t code;        /**< the platform error code or reply status, 0 when there is none */
};

/**
 * The callbacks. Any of them may be NULL. A host fills `version` with
 * QDCLI_OBSERVER_VERSION and `size` with sizeof(struct qdcli_observer); the
 * library uses no callback beyond `size`, and none at all from an observer
 * of another version.
 */
struct qdcli_observer {
    uint32_t version;
    uint32_t size;
    void *context; /**< handed back to every callback */
    /** The handler starts working on `subject`; subjects nest (the internal
        statistics of an extender told inside the report of its interface). */
    void (*subject_begin)(void *context, const struct qdcli_subject *subject);
    /** The handler is done with the subject begun last. */
    void (*subject_end)(void *context, const struct qdcli_subject *subject);
    /** A row of `table` begins; the values until its row_end belong to it.
        Rows nest (the SS rows of an ASIC row). */
    void (*row_begin)(void *context, const char *table);
    void (*row_end)(void *context, const char *table);
    /** One value, by catalogue attribute. */
    void (*value)(void *context, uint32_t attr_id, const void *value, uint32_t length);
    /** A failure or refusal, told right after its text was printed. */
    void (*failure)(void *context, const struct qdcli_failure *failure);
};

/**
 * Optional host operation: the observer of the running handler, or NULL for
 * none. libqdcli.so holds a weak reference to it, so a host that does not
 * define it still loads the library.
 */
const struct qdcli_observer *qdcli_observer_get(void);

#ifdef __cplusplus
}
#endif

#endif /* QDCLI_OBSERVER_H */
