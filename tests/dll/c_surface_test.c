/* The flat surface as a C program uses it: c_surface_test VECTORS, beside the server that tests/net/with_server.py
 * runs. Plain C11 for any compiler of the target; GoogleTest is not for C, so it counts its checks itself, and ends
 * with the line that the runner demands. */
#include <toolbelt/toolbelt_c.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static int checks, failures;

#define CHECK(condition)                                                                                               \
    do {                                                                                                               \
        ++checks;                                                                                                      \
        if (!(condition)) ++failures, printf("line %d: %s\n", __LINE__, #condition);                                   \
    } while (0)

static const char* vectors;

typedef struct
{
    char bytes[8192];
    uint32_t size;
} File;

static File read(const char* name)
{
    File file = {{0}, 0};
    char path[1024];
    snprintf(path, sizeof path, "%s/%s", vectors, name);
    FILE* stream = fopen(path, "rb");
    if (stream) {
        file.size = (uint32_t)fread(file.bytes, 1, sizeof file.bytes, stream);
        fclose(stream);
    }
    CHECK(file.size > 0 && file.size < sizeof file.bytes);
    return file;
}

static int startsWith(const uint8_t* bytes, const char* hex)
{
    for (unsigned value; *hex; hex += 2, ++bytes)
        if (sscanf(hex, "%2x", &value) != 1 || value != *bytes) return 0;
    return 1;
}

static void digests(void)
{
    /* The digest of "abc", by each standard. */
    static const struct
    {
        int32_t id;
        uint32_t size;
        const char* digest;
    } rows[] = {{1, 16, "900150983cd24fb0"},
                {2, 20, "a9993e364706816a"},
                {8, 32, "ba7816bf8f01cfea"},
                {10, 64, "ddaf35a193617aba"}};
    uint8_t output[64];
    for (unsigned i = 0; i < sizeof rows / sizeof *rows; ++i) {
        uint32_t size = 0;
        CHECK(tb_digest(rows[i].id, "abc", 3, NULL, &size) == TB_E_BUFFER && size == rows[i].size);
        CHECK(tb_digest(rows[i].id, "abc", 3, output, &size) == TB_OK && startsWith(output, rows[i].digest));
        tb_hash* hash = NULL;
        CHECK(tb_hash_open(rows[i].id, &hash) == TB_OK);
        for (int round = 0; round < 2; ++round) { /* finishing starts anew */
            memset(output, 0, sizeof output);
            CHECK(tb_hash_update(hash, "a", 1) == TB_OK && tb_hash_update(hash, NULL, 0) == TB_OK);
            CHECK(tb_hash_update(hash, "bc", 2) == TB_OK);
            CHECK(tb_hash_finish(hash, output, &size) == TB_OK && startsWith(output, rows[i].digest));
        }
        --size;
        CHECK(tb_hash_finish(hash, output, &size) == TB_E_BUFFER && size == rows[i].size);
        CHECK(tb_hash_update(hash, NULL, 1) == TB_E_ARGUMENT && tb_hash_finish(hash, output, NULL) == TB_E_ARGUMENT);
        tb_hash_close(hash);
    }
    tb_hash* none = NULL;
    uint32_t size = sizeof output;
    CHECK(tb_digest(9, "abc", 3, output, &size) == TB_E_ALGORITHM && tb_hash_open(9, &none) == TB_E_ALGORITHM && !none);
    CHECK(tb_digest(8, NULL, 3, output, &size) == TB_E_ARGUMENT && tb_hash_open(8, NULL) == TB_E_ARGUMENT);
    CHECK(tb_digest(8, "abc", 3, NULL, &size) == TB_E_ARGUMENT);
    tb_hash_close(NULL);
}

static void ciphers(void)
{
    /* NIST SP 800-38A, F.2.1 and F.3.13: AES-128, the first block. */
    static const uint8_t key[16] = {0x2b, 0x7e, 0x15, 0x16, 0x28, 0xae, 0xd2, 0xa6,
                                    0xab, 0xf7, 0x15, 0x88, 0x09, 0xcf, 0x4f, 0x3c};
    static const uint8_t iv[16] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
    static const uint8_t text[16] = {0x6b, 0xc1, 0xbe, 0xe2, 0x2e, 0x40, 0x9f, 0x96,
                                     0xe9, 0x3d, 0x7e, 0x11, 0x73, 0x93, 0x17, 0x2a};
    static const struct
    {
        uint32_t mode;
        const char* result;
        tb_status ofFive;
    } rows[] = {{TB_CBC, "7649abac8119b246cee98e9b12e9197d", TB_E_ARGUMENT},
                {TB_CFB, "3b3fd92eb72dad20333449f8e83cfb4a", TB_OK}};
    uint8_t bytes[16];
    for (unsigned i = 0; i < sizeof rows / sizeof *rows; ++i) {
        tb_cipher* cipher = NULL;
        CHECK(tb_cipher_open(7, rows[i].mode, key, sizeof key, &cipher) == TB_OK && tb_cipher_block_size(cipher) == 16);
        CHECK(tb_cipher_encrypt(cipher, iv, text, bytes, 16) == TB_OK && startsWith(bytes, rows[i].result));
        CHECK(tb_cipher_decrypt(cipher, iv, bytes, bytes, 16) == TB_OK && memcmp(bytes, text, 16) == 0);
        CHECK(tb_cipher_encrypt(cipher, iv, text, bytes, 5) == rows[i].ofFive);
        CHECK(tb_cipher_encrypt(cipher, iv, NULL, bytes, 16) == TB_E_ARGUMENT);
        CHECK(tb_cipher_encrypt(cipher, iv, text, bytes, 0x80000000u) == TB_E_ARGUMENT);
        tb_cipher_close(cipher);
    }
    tb_cipher* none = NULL;
    CHECK(tb_cipher_open(7, TB_CBC, key, 15, &none) == TB_E_KEY &&
          tb_cipher_open(99, 0, key, 16, &none) == TB_E_ALGORITHM);
    CHECK(tb_cipher_open(7, 3, key, 16, &none) == TB_E_ARGUMENT &&
          tb_cipher_open(7, 0, NULL, 16, &none) == TB_E_ARGUMENT);
    CHECK(!none && tb_cipher_block_size(NULL) == 0 && tb_cipher_encrypt(NULL, iv, text, bytes, 16) == TB_E_ARGUMENT);
    tb_cipher_close(NULL);
}

static void certificates(void)
{
    File list = read("../dll/certificates.txt");
    int rows = 0;
    for (const char* line = strtok(list.bytes, "\n"); line; line = strtok(NULL, "\n")) {
        char certificate[100] = "certificates/", issuer[100] = "certificates/";
        unsigned when = 0, expected = 0;
        if (*line == '#') continue;
        CHECK(sscanf(line, "%80s %80s %u %u", strchr(certificate, 0), strchr(issuer, 0), &when, &expected) == 4);
        const int selfSigned = strcmp(issuer, "certificates/itself") == 0;
        const File leaf = read(certificate), above = read(selfSigned ? certificate : issuer);
        const tb_status status = tb_certificate_check(leaf.bytes, leaf.size, selfSigned ? NULL : above.bytes,
                                                      selfSigned ? 0 : above.size, when);
        if (status != (tb_status)expected) printf("%s: %s\n", line, tb_status_text(status));
        CHECK(status == (tb_status)expected);
        ++rows;
    }
    CHECK(rows == 14);
    /* What begins like DER is judged as DER, whatever PEM text stands inside. */
    File hidden = read("certificates/real-isrg-root-x1.pem");
    CHECK(tb_certificate_check(hidden.bytes, hidden.size, NULL, 0, 1700000000) == TB_OK);
    memmove(hidden.bytes + 1, hidden.bytes, hidden.size);
    hidden.bytes[0] = 0x30;
    CHECK(tb_certificate_check(hidden.bytes, hidden.size + 1, NULL, 0, 1700000000) == TB_E_CERTIFICATE);
    CHECK(tb_certificate_check(NULL, 0, NULL, 0, 0) == TB_E_ARGUMENT &&
          tb_certificate_check("", 0, NULL, 0, 0) == TB_E_CERTIFICATE);
}

static void signatures(void)
{
    /* Signatures of "abc" by the key, as openssl makes them. */
    static const struct
    {
        int32_t id;
        const char* start;
    } rows[] = {{1, "87b8306437a9b34eb2d8b9af"},
                {2, "971a9ef7fe7f8b32dbf10d32"},
                {3, "5cb9bd1fc626ccd86adf5315"},
                {8, "55a74437ca4269b81bba688a"},
                {10, "b5993456c7884d5058f4a6a0"}};
    const File private = read("keys/rsa2048.private.pem"), public = read("keys/rsa2048.pub.pem"),
               other = read("keys/dsa2048-256.pub.pem");
    uint8_t signature[256];
    uint32_t size = 0;
    CHECK(tb_rsa_sign(private.bytes, private.size, 8, "abc", 3, NULL, &size) == TB_E_BUFFER &&
          size == sizeof signature);
    for (unsigned i = 0; i < sizeof rows / sizeof *rows; ++i) {
        CHECK(tb_rsa_sign(private.bytes, private.size, rows[i].id, "abc", 3, signature, &size) == TB_OK && size == 256);
        CHECK(startsWith(signature, rows[i].start));
        CHECK(tb_rsa_verify(public.bytes, public.size, rows[i].id, "abc", 3, signature, size) == TB_OK);
        CHECK(tb_rsa_verify(public.bytes, public.size, rows[i].id, "abd", 3, signature, size) == TB_E_SIGNATURE);
        CHECK(tb_rsa_verify(public.bytes, public.size, rows[i].id, "abc", 3, signature, size - 1) == TB_E_SIGNATURE);
    }
    CHECK(tb_rsa_sign(private.bytes, private.size, 0x81, "abc", 3, signature, &size) == TB_E_ALGORITHM);
    CHECK(tb_rsa_sign(public.bytes, public.size, 8, "abc", 3, signature, &size) == TB_E_KEY);
    CHECK(tb_rsa_sign(private.bytes, private.size / 2, 8, "abc", 3, signature, &size) == TB_E_KEY);
    CHECK(tb_rsa_sign(NULL, 0, 8, "abc", 3, signature, &size) == TB_E_ARGUMENT);
    CHECK(tb_rsa_verify(other.bytes, other.size, 8, "abc", 3, signature, 256) == TB_E_ALGORITHM);
    CHECK(tb_rsa_verify(private.bytes, private.size, 8, "abc", 3, signature, 256) == TB_E_KEY);
    CHECK(tb_rsa_verify(public.bytes, public.size, 8, "abc", 3, NULL, 256) == TB_E_ARGUMENT);
}

static void posts(void)
{
    const char* ports = getenv("TOOLBELT_TEST_PORTS");
    CHECK(ports != NULL);
    char url[128];
    tb_answer* answer = NULL;
    snprintf(url, sizeof url, "http://127.0.0.1:%d/json", ports ? atoi(ports) : 0);
    CHECK(tb_json_post(url, "{\"n\":1}", &answer) == TB_OK);
    uint32_t length = 0;
    static const char expected[] = "{\"method\":\"POST\",\"path\":\"/json\",\"received\":{\"n\":1}}";
    const uint8_t* bytes = tb_answer_bytes(answer, &length);
    CHECK(bytes && length == sizeof expected - 1 && memcmp(bytes, expected, length) == 0);
    tb_answer_close(answer);

    answer = NULL;
    snprintf(url, sizeof url, "http://127.0.0.1:%d/none", ports ? atoi(ports) : 0);
    CHECK(tb_json_post("ftp://localhost/", "{}", &answer) == TB_E_URL &&
          tb_json_post(url, NULL, &answer) == TB_E_ARGUMENT);
    CHECK(tb_json_post("http://127.0.0.1:1/", "{}", &answer) == TB_E_NOT_SENT && !answer);
    CHECK(tb_answer_bytes(NULL, &length) == NULL && length == 0);
    tb_answer_close(NULL);
}

int main(int argc, char** argv)
{
    vectors = argc > 1 ? argv[1] : ".";
    digests();
    ciphers();
    certificates();
    signatures();
    posts();
    CHECK(strcmp(tb_version(), TOOLBELT_VERSION) == 0 && strcmp(tb_status_text(TB_E_EXPIRED), "expired") == 0);
    CHECK(tb_status_text(-1) != NULL && tb_status_text(1000) != NULL);
    if (failures == 0) printf("[  PASSED  ] %d tests.\n", checks);
    return failures != 0;
}
